# Installs the build into a scratch prefix, runs the installed programs, then
# compiles and runs a C program (PROGRAM) that includes only <zanpx.h>, as C99
# with warnings as errors, linked through pkg-config.
set(prefix ${BUILD_DIR}/install-test)
file(REMOVE_RECURSE ${prefix})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix}
                RESULT_VARIABLE rc OUTPUT_QUIET)
if(rc)
  message(FATAL_ERROR "install failed")
endif()
# Installed programs find the installed library by themselves.
foreach(program zanpx_example zanpx)
  if(EXISTS ${prefix}/bin/${program})
    execute_process(COMMAND ${prefix}/bin/${program} help RESULT_VARIABLE rc OUTPUT_QUIET ERROR_VARIABLE err)
    if(rc)
      message(FATAL_ERROR "installed ${program} does not run: ${err}")
    endif()
  endif()
endforeach()
file(GLOB pcdir ${prefix}/lib*/pkgconfig ${prefix}/lib/*/pkgconfig)
set(ENV{PKG_CONFIG_PATH} "${pcdir}")
execute_process(COMMAND pkg-config --cflags --libs zanpx OUTPUT_VARIABLE flags RESULT_VARIABLE rc
                OUTPUT_STRIP_TRAILING_WHITESPACE)
if(rc)
  message(FATAL_ERROR "pkg-config does not know zanpx")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
set(exe ${prefix}/from_package)
execute_process(COMMAND ${CC} -std=c99 -Wall -Werror ${EXTRA} ${PROGRAM} ${flags} -o ${exe}
                RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "compiling against the installed package failed")
endif()
string(REGEX MATCH "-L([^ ;]+)" _ "${flags}")
set(ENV{LD_LIBRARY_PATH} "${CMAKE_MATCH_1}")
execute_process(COMMAND ${exe} RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "the program built against the installed package failed")
endif()
