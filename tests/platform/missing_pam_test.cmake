# Configures the project on a system whose PAM headers are hidden, and checks that the configuration fails with their
# name.
file(REMOVE_RECURSE ${WORK})
execute_process(
    COMMAND ${CMAKE_COMMAND} -G Ninja -S ${PROJECT} -B ${WORK} -DKESSIL_TESTS=OFF -DKESSIL_BENCH=OFF
        -DCMAKE_IGNORE_PATH=${HEADERS}
    OUTPUT_QUIET ERROR_VARIABLE messages RESULT_VARIABLE code)
if(code EQUAL 0 OR NOT messages MATCHES "security/pam_appl.h is missing" OR NOT messages MATCHES "libpam0g-dev")
    message(FATAL_ERROR "the configuration ended with ${code} and printed: ${messages}")
endif()
