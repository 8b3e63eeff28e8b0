# End-to-end runs of the zanpx program. MODE picks the group; ZANPX is the
# program, SUITE the BMP corpus, WORK a scratch folder of this test's own.
if(NOT MODE STREQUAL "demo" AND NOT EXISTS ${SUITE})
  message(STATUS "no BMP corpus at ${SUITE}: nothing to run")
  return()
endif()
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})

# Runs the program; fails the test unless the exit code is zero exactly when
# `expect_ok` says so. The output lands in OUT.
function(zanpx expect_ok)
  execute_process(COMMAND ${ZANPX} ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  set(OUT "${out}${err}" PARENT_SCOPE)
  if(expect_ok AND NOT rc EQUAL 0)
    message(FATAL_ERROR "zanpx ${ARGN}: exit ${rc}\n${out}${err}")
  elseif(NOT expect_ok AND rc EQUAL 0)
    message(FATAL_ERROR "zanpx ${ARGN}: succeeded but should have failed\n${out}${err}")
  endif()
endfunction()

if(MODE STREQUAL "demo")
  zanpx(TRUE demo ${WORK}/demo)
  file(READ ${WORK}/demo/index.html html)
  string(REGEX MATCHALL "src=\"[^\"]+\"" images "${html}")
  list(LENGTH images n)
  if(n LESS 10)
    message(FATAL_ERROR "the gallery shows only ${n} pictures")
  endif()
  foreach(src ${images})
    string(REGEX REPLACE "src=\"([^\"]+)\"" "\\1" name "${src}")
    zanpx(TRUE info ${WORK}/demo/${name})
  endforeach()
  # The gray test picture makes a 1-bit file and survives a 4-bit RLE trip.
  zanpx(TRUE run ${WORK}/demo/rings.bmp ${WORK}/bw.bmp reduce1 ordered)
  zanpx(TRUE info ${WORK}/bw.bmp)
  if(NOT OUT MATCHES "1 per pixel")
    message(FATAL_ERROR "reduce1 did not give a 1-bit file: ${OUT}")
  endif()
  zanpx(TRUE convert ${WORK}/demo/rings.bmp ${WORK}/rings8.bmp --bits 8 --rle)
  zanpx(TRUE compare ${WORK}/demo/rings.bmp ${WORK}/rings8.bmp)
  file(GLOB leftovers ${WORK}/demo/*.part)
  if(leftovers)
    message(FATAL_ERROR "temporary files left: ${leftovers}")
  endif()

elseif(MODE STREQUAL "info")
  foreach(name pal1 pal4rle pal8 pal8rle pal8topdown pal8v5 rgb16-565 rgb24 rgb32bf)
    zanpx(TRUE info ${SUITE}/${name}.bmp)
    if(NOT OUT MATCHES "library: ")
      message(FATAL_ERROR "info ${name}: no library view\n${OUT}")
    endif()
  endforeach()
  zanpx(TRUE info ${SUITE}/pal8rle.bmp)
  if(NOT OUT MATCHES "RLE8" OR NOT OUT MATCHES "copied")
    message(FATAL_ERROR "info pal8rle: ${OUT}")
  endif()
  # A core header is the library's to refuse, with its own words.
  zanpx(FALSE info ${SUITE}/pal8os2.bmp)
  if(NOT OUT MATCHES "zanTranslateDIB: Bad argument")
    message(FATAL_ERROR "info pal8os2: ${OUT}")
  endif()

elseif(MODE STREQUAL "roundtrip")
  # Lossless conversions give back the very pixels they were given.
  foreach(c "pal8|--bits;8;--rle;--palette;keep" "pal4|--bits;4;--rle;--palette;keep"
            "pal1|--bits;1;--palette;keep" "pal8gs|--bits;8;--palette;keep" "rgb24|--bits;32"
            "rgb32|--bits;24" "pal8topdown|--bits;24" "pal4rle|--bits;8;--rle;--palette;mediancut")
    string(REPLACE "|" ";" parts "${c}")
    list(GET parts 0 name)
    list(REMOVE_AT parts 0)
    zanpx(TRUE convert ${SUITE}/${name}.bmp ${WORK}/${name}.bmp ${parts})
    zanpx(TRUE compare ${SUITE}/${name}.bmp ${WORK}/${name}.bmp)
  endforeach()
  zanpx(TRUE run ${SUITE}/rgb24.bmp ${WORK}/same.bmp reduce 8)
  zanpx(TRUE compare ${SUITE}/rgb24.bmp ${WORK}/same.bmp)
  zanpx(TRUE run ${SUITE}/rgb24.bmp ${WORK}/less.bmp reduce 2 fs)
  zanpx(FALSE compare ${SUITE}/rgb24.bmp ${WORK}/less.bmp)

elseif(MODE STREQUAL "errors")
  # Each failure is one line with the reason, and leaves no output behind.
  set(out ${WORK}/out.bmp)
  set(cases
    "convert;${WORK}/missing.bmp;${out}"
    "convert;${CMAKE_CURRENT_LIST_FILE};${out}"
    "convert;${SUITE}/pal8os2.bmp;${out}"
    "convert;${SUITE}/rgb24.bmp;${out};--bits;7"
    "convert;${SUITE}/rgb24.bmp;${out};--rle"
    "convert;${SUITE}/rgb24.bmp;${out};--dither;sideways"
    "convert;${SUITE}/rgb24.bmp;${out};--bits;4;--palette;keep"
    "run;${SUITE}/rgb24.bmp;${out};no-such-op"
    "run;${SUITE}/rgb24.bmp;${out};reduce"
    "run;${SUITE}/rgb24.bmp;${out};reduce;many"
    "run;${SUITE}/rgb24.bmp;${out};reduce;2;fs;9"
    "info"
    "frobnicate")
  foreach(c IN LISTS cases)
    zanpx(FALSE ${c})
    string(STRIP "${OUT}" msg)
    if(msg STREQUAL "" OR NOT msg MATCHES "^zanpx")
      message(FATAL_ERROR "zanpx ${c}: no message\n${OUT}")
    endif()
    file(GLOB left ${WORK}/*)
    if(left)
      message(FATAL_ERROR "zanpx ${c}: left ${left}")
    endif()
  endforeach()
  zanpx(FALSE run ${SUITE}/rgb24.bmp ${out} reduce 2 fs 9)
  if(NOT OUT MATCHES "zanReduceBits: Bad argument \\(\\(jitterType<0\\)\\|\\|\\( jitterType >= 9\\)\\)")
    message(FATAL_ERROR "the library's reason is missing: ${OUT}")
  endif()
else()
  message(FATAL_ERROR "unknown MODE ${MODE}")
endif()
