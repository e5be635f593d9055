# The API reference, from the comments of the public headers: `ninja -C build/release reference`, then
# build/release/reference/html/index.html. A public operation without a comment fails it.
find_program(POSTRIDER_DOXYGEN doxygen)
if(POSTRIDER_DOXYGEN)
    public_headers(headers postrider.h)
    list(TRANSFORM headers PREPEND "\"${PROJECT_SOURCE_DIR}/" OUTPUT_VARIABLE REFERENCE_INPUT)
    list(TRANSFORM REFERENCE_INPUT APPEND "\"")
    list(JOIN REFERENCE_INPUT " " REFERENCE_INPUT)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/Doxyfile.in
        ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
    add_custom_target(reference
        COMMAND ${POSTRIDER_DOXYGEN} ${PROJECT_BINARY_DIR}/Doxyfile
        COMMENT "Making the API reference"
        VERBATIM)
else()
    add_custom_target(reference
        COMMAND ${CMAKE_COMMAND} -E echo "The reference needs Doxygen: apt-get install doxygen"
        COMMAND ${CMAKE_COMMAND} -E false)
endif()
