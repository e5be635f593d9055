# What differs between the packages: the zip has everything, the setup program the programs alone.
if(CPACK_GENERATOR STREQUAL "NSIS")
    set(CPACK_PACKAGE_FILE_NAME postrider-${CPACK_PACKAGE_VERSION_MAJOR}.${CPACK_PACKAGE_VERSION_MINOR}-setup)
    set(CPACK_INSTALL_CMAKE_PROJECTS "${CPACK_POSTRIDER_BUILD};Postrider;programs;/")
endif()
