# add_import_library(name dll_target def): the import library lib<name>.dll.a for the DLL.
#
# The linker's own import library serves the classes; for the callee-cleans C functions it lacks the
# decorated names that a caller's object code asks for, which dlltool makes from the export list.
function(add_import_library name dll_target def)
    string(REPLACE i686-w64-mingw32-g++-posix i686-w64-mingw32-dlltool dlltool
        ${CMAKE_CXX_COMPILER})
    set(folder ${PROJECT_BINARY_DIR}/lib)
    set(library ${folder}/lib${name}.dll.a)
    # The archive tool's script knows no quotes: its names are relative, since the folder's may hold
    # spaces.
    file(WRITE ${folder}/${name}.mri "CREATE lib${name}.dll.a\nADDLIB ${name}_functions.a\n"
        "ADDLIB ${name}_classes.a\nSAVE\nEND\n")
    add_custom_command(OUTPUT ${library}
        COMMAND ${dlltool} --kill-at --input-def ${def} --output-lib ${name}_functions.a
        COMMAND ${CMAKE_COMMAND} -E rm -f lib${name}.dll.a
        COMMAND ${CMAKE_AR} -M < ${name}.mri
        DEPENDS ${dll_target} ${def}
        WORKING_DIRECTORY ${folder}
        COMMENT "Making the import library lib${name}.dll.a"
        VERBATIM)
    add_custom_target(${name}_import_library DEPENDS ${library})
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE ${library})
    add_dependencies(${name} ${name}_import_library)
endfunction()

# add_microsoft_import_library(name def): <name>.lib with the export list's functions, for linkers of
# Microsoft's kind. Its short entries let them look for the name without its decoration; the MinGW
# tool does not write them.
function(add_microsoft_import_library name def)
    find_program(POSTRIDER_LLVM_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14 REQUIRED)
    set(library ${PROJECT_BINARY_DIR}/lib/${name}.lib)
    add_custom_command(OUTPUT ${library}
        COMMAND ${POSTRIDER_LLVM_DLLTOOL} -m i386 -k -d ${def} -l ${library}
        DEPENDS ${def}
        COMMENT "Making the import library ${name}.lib"
        VERBATIM)
    add_custom_target(${name}_microsoft_import_library ALL DEPENDS ${library})
endfunction()
