file(GLOB_RECURSE sources CONFIGURE_DEPENDS
    ${PROJECT_SOURCE_DIR}/resident/*.cpp
    ${PROJECT_SOURCE_DIR}/system/*.cpp
    ${PROJECT_SOURCE_DIR}/ticker/*.cpp)
# Where small blocks of memory come from: a library for tests has its own.
set(small_blocks
    ${PROJECT_SOURCE_DIR}/resident/core/block_cache.cpp
    ${PROJECT_SOURCE_DIR}/resident/core/node_slots.cpp)
list(REMOVE_ITEM sources ${small_blocks})
add_library(jxticdll_objects OBJECT ${sources})
target_compile_definitions(jxticdll_objects PUBLIC JXTICDLL_EXPORTS)
target_link_libraries(jxticdll_objects PUBLIC postrider_options jxsysres)
# Copies of functions that the optimiser makes for one caller or in parts would be exported like the
# functions themselves.
target_compile_options(jxticdll_objects PUBLIC -fno-ipa-cp -fno-partial-inlining)
# Every edge calls edges.dll, which counts them: tests/fuzz/edges.h.
if(POSTRIDER_COVERAGE)
    target_compile_options(jxticdll_objects PRIVATE -fsanitize-coverage=trace-pc)
    target_link_libraries(jxticdll_objects PUBLIC edges)
endif()

# add_ticker_library(target source...): a JXTICDLL.DLL with its small blocks from these sources.
function(add_ticker_library target)
    add_library(${target} SHARED ${ARGN} ${PROJECT_SOURCE_DIR}/ticker/jxticdll.def
        ${PROJECT_SOURCE_DIR}/ticker/jxticdll.rc)
    set_target_properties(${target} PROPERTIES
        OUTPUT_NAME JXTICDLL
        SUFFIX .DLL
        IMPORT_PREFIX ""
        IMPORT_SUFFIX .a
        LINK_DEPENDS ${PROJECT_SOURCE_DIR}/ticker/jxticdll.def)
    target_link_libraries(${target} PRIVATE jxticdll_objects ntdll)
    # Callee-cleans functions are exported under their plain names.
    target_link_options(${target} PRIVATE -Wl,--kill-at)
endfunction()

add_ticker_library(jxticdll_library ${small_blocks})
set_target_properties(jxticdll_library PROPERTIES ARCHIVE_OUTPUT_NAME jxticdll_classes)

# What it exports is what the committed list says.
set(exports_stamp ${PROJECT_BINARY_DIR}/exports.stamp)
add_custom_command(OUTPUT ${exports_stamp}
    COMMAND ${PROJECT_SOURCE_DIR}/tools/exports check $<TARGET_FILE:jxticdll_library>
    COMMAND ${CMAKE_COMMAND} -E touch ${exports_stamp}
    DEPENDS jxticdll_library ${PROJECT_SOURCE_DIR}/ticker/exports.txt
        ${PROJECT_SOURCE_DIR}/tools/exports
    COMMENT "Comparing the exported names with ticker/exports.txt"
    VERBATIM)
add_custom_target(jxticdll_exports ALL DEPENDS ${exports_stamp})

add_import_library(jxticdll jxticdll_library ${PROJECT_SOURCE_DIR}/ticker/jxticdll.def)
target_include_directories(jxticdll INTERFACE ${PROJECT_SOURCE_DIR})
add_microsoft_import_library(postrider_ticker ${PROJECT_SOURCE_DIR}/ticker/jxticdll.def)
