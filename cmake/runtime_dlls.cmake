# The C++ run-time is shared: its DLLs lie beside ours.
set(runtime_dlls libstdc++-6.dll libgcc_s_dw2-1.dll libwinpthread-1.dll)
if(POSTRIDER_CHECKED)
    list(APPEND runtime_dlls libssp-0.dll)
endif()
set(POSTRIDER_RUNTIME_DLLS "")
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
foreach(dll ${runtime_dlls})
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${dll}
        OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT EXISTS ${path})
        find_file(path_of_${dll} ${dll} PATHS /usr/i686-w64-mingw32/lib /usr/i686-w64-mingw32/bin
            NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
        set(path ${path_of_${dll}})
    endif()
    list(APPEND POSTRIDER_RUNTIME_DLLS ${path})
    # Without the debug information, which is ten times the rest: each start of a program reads it.
    execute_process(COMMAND ${CMAKE_STRIP} --strip-debug -o ${PROJECT_BINARY_DIR}/bin/${dll} ${path}
        COMMAND_ERROR_IS_FATAL ANY)
endforeach()
