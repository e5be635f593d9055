# What `cmake --install` lays down, and the zip that `cpack` makes of it.
include(CMakePackageConfigHelpers)

# public_headers(result header): the header and those that it needs, from the project's folder.
function(public_headers result header)
    set(found "")
    set(open ${header})
    while(open)
        list(POP_FRONT open next)
        list(APPEND found ${next})
        file(STRINGS ${PROJECT_SOURCE_DIR}/${next} includes REGEX "^#include \"")
        list(TRANSFORM includes REPLACE "^#include \"([^\"]*)\".*" "\\1")
        list(APPEND open ${includes})
        list(REMOVE_DUPLICATES open)
        list(REMOVE_ITEM open ${found})
    endwhile()
    set(${result} ${found} PARENT_SCOPE)
endfunction()

public_headers(headers postrider.h)
foreach(header ${headers})
    cmake_path(GET header PARENT_PATH folder)
    install(FILES ${header} DESTINATION include/postrider/${folder})
endforeach()
# A header may come to need another.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${headers})

# The linker's own import library stays out: the merged one has its members, too.
install(TARGETS jxticdll_library jxsysres notifier mailfolder mailticker
    RUNTIME DESTINATION bin COMPONENT programs
    ARCHIVE DESTINATION lib EXCLUDE_FROM_ALL)
install(FILES ${POSTRIDER_RUNTIME_DLLS} DESTINATION bin COMPONENT programs)
install(FILES ${PROJECT_BINARY_DIR}/lib/libjxticdll.dll.a
    ${PROJECT_BINARY_DIR}/lib/postrider_ticker.lib DESTINATION lib)

set(package_folder lib/cmake/Postrider)
set(dlls JXTICDLL.DLL JXSYSRES.DLL)
foreach(dll ${POSTRIDER_RUNTIME_DLLS})
    cmake_path(GET dll FILENAME name)
    list(APPEND dlls ${name})
endforeach()
list(JOIN dlls " " dlls)
configure_package_config_file(cmake/PostriderConfig.cmake.in
    ${PROJECT_BINARY_DIR}/PostriderConfig.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/PostriderConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/PostriderConfig.cmake
    ${PROJECT_BINARY_DIR}/PostriderConfigVersion.cmake cmake/mingw-i686.cmake
    DESTINATION ${package_folder})

# Where debug information is to go, it goes from the run-time DLLs as well.
foreach(dll ${POSTRIDER_RUNTIME_DLLS})
    cmake_path(GET dll FILENAME name)
    install(CODE "if(CMAKE_INSTALL_DO_STRIP)
        execute_process(COMMAND ${CMAKE_STRIP}
            \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin/${name}\" COMMAND_ERROR_IS_FATAL ANY)
    endif()" COMPONENT programs)
endforeach()

install(FILES docs/mailfolder.1 DESTINATION share/man/man1)
install(FILES completions/mailfolder.bash DESTINATION share/bash-completion/completions
    RENAME mailfolder)
install(FILES completions/mailfolder.ps1 DESTINATION share/powershell)

# The zip has the documents and the examples besides.
install(FILES README.md DESTINATION . COMPONENT archive EXCLUDE_FROM_ALL)
install(DIRECTORY docs examples DESTINATION . COMPONENT archive EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME postrider-${PROJECT_VERSION}-win32)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_CMAKE_PROJECTS
    "${PROJECT_BINARY_DIR};Postrider;ALL;/;${PROJECT_BINARY_DIR};Postrider;archive;/")
# The setup program, made by `cpack -G NSIS`: cmake/setup/.
list(APPEND CMAKE_MODULE_PATH ${PROJECT_SOURCE_DIR}/cmake/setup)
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/setup/packages.cmake)
set(CPACK_POSTRIDER_BUILD ${PROJECT_BINARY_DIR})
set(CPACK_POSTRIDER_ICON ${PROJECT_SOURCE_DIR}/programs/mailticker/mailticker.ico)
include(CPack)
