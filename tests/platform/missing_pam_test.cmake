# Configures the project on a system whose PAM headers are out of sight, and sees it refused with their name.
file(REMOVE_RECURSE ${WORK})
execute_process(
    COMMAND ${CMAKE_COMMAND} -G Ninja -S ${PROJECT} -B ${WORK} -DKESSIL_TESTS=OFF -DKESSIL_BENCH=OFF
        -DCMAKE_IGNORE_PATH=${HEADERS}
    OUTPUT_QUIET ERROR_VARIABLE said RESULT_VARIABLE code)
if(code EQUAL 0 OR NOT said MATCHES "security/pam_appl.h is missing" OR NOT said MATCHES "libpam0g-dev")
    message(FATAL_ERROR "the configuration ended with ${code} and said: ${said}")
endif()
