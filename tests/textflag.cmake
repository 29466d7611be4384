# "--text" prints its notice on standard error and exits with 1, before any window.
execute_process(COMMAND ${TALLIS} --text
    RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 1)
    message(FATAL_ERROR "--text: expected exit code 1, got ${rc}")
endif()
if(NOT err STREQUAL "Tallis: this build was compiled without ncurses; --text mode is unavailable.\n")
    message(FATAL_ERROR "--text: unexpected stderr: [${err}]")
endif()
if(NOT out STREQUAL "")
    message(FATAL_ERROR "--text: unexpected stdout: [${out}]")
endif()
