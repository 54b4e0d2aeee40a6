# Installs the data source's header into an empty prefix, and builds a copy of vorn_fs with nothing but that.
set(prefix ${WORK}/prefix)
file(REMOVE_RECURSE ${WORK})

function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

run(${CMAKE_COMMAND} --install ${KESSIL_BUILD} --component data_source --prefix ${prefix})
file(COPY ${SAMPLE} DESTINATION ${WORK})
cmake_path(GET SAMPLE FILENAME name)
run(${CMAKE_COMMAND} -G Ninja -S ${WORK}/${name} -B ${WORK}/build -DCMAKE_PREFIX_PATH=${prefix} ${SETTINGS})
run(${CMAKE_COMMAND} --build ${WORK}/build)
file(GLOB library ${WORK}/build/vorn_fs.*)
if(NOT library)
    message(FATAL_ERROR "there is no library in ${WORK}/build")
endif()
