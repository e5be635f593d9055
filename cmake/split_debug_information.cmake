# split_debug_information(TARGET): puts a checked program's debug information into a file beside it,
# where gdb finds it. Each start reads all of a program's file, and templates make thirty times as much
# of it as there is code.
function(split_debug_information target)
    if(NOT CMAKE_BUILD_TYPE STREQUAL RelWithDebInfo)
        return()
    endif()
    set(program $<TARGET_FILE:${target}>)
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${CMAKE_OBJCOPY} --only-keep-debug ${program} ${program}.debug
        COMMAND ${CMAKE_OBJCOPY} --strip-debug --add-gnu-debuglink=${program}.debug ${program} VERBATIM)
endfunction()
