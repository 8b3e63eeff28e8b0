# End-to-end runs of the zanpx program. MODE picks the group; ZANPX is the
# program, SUITE the BMP corpus, WORK a scratch folder of this test's own.
if(NOT MODE STREQUAL "demo" AND NOT EXISTS ${SUITE})
  message(STATUS "no BMP corpus at ${SUITE}: nothing to run")
  return()
endif()
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
set(S ${SUITE})
set(W ${WORK})

# Runs the program; fails the test unless it exits with `code` (OK: 0, FAIL:
# anything else, or the number). The output lands in OUT.
function(zanpx code)
  execute_process(COMMAND ${ZANPX} ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  set(OUT "${out}${err}" PARENT_SCOPE)
  if((code STREQUAL "OK" AND NOT rc EQUAL 0) OR (code STREQUAL "FAIL" AND rc EQUAL 0)
     OR (code MATCHES "^[0-9]+$" AND NOT rc EQUAL code))
    message(FATAL_ERROR "zanpx ${ARGN}: exit ${rc}, wanted ${code}\n${out}${err}")
  endif()
endfunction()

# Fails unless OUT matches the regular expression.
function(expect_out regex)
  if(NOT OUT MATCHES "${regex}")
    message(FATAL_ERROR "wanted output matching '${regex}', got:\n${OUT}")
  endif()
endfunction()

# Fails when the folder holds anything but the files named (temporary files included).
function(expect_only dir)
  file(GLOB left RELATIVE ${dir} ${dir}/* ${dir}/.*)
  list(REMOVE_ITEM left ${ARGN})
  if(left)
    message(FATAL_ERROR "left in ${dir}: ${left}")
  endif()
endfunction()

if(MODE STREQUAL "demo")
  zanpx(OK demo ${W}/demo)
  file(READ ${W}/demo/index.html html)
  string(REGEX MATCHALL "src=\"[^\"]+\"" images "${html}")
  list(LENGTH images n)
  if(n LESS 10)
    message(FATAL_ERROR "the gallery shows only ${n} pictures")
  endif()
  foreach(src ${images})
    string(REGEX REPLACE "src=\"([^\"]+)\"" "\\1" name "${src}")
    zanpx(OK info ${W}/demo/${name})
  endforeach()
  # Dithered files are not the undithered ones; black and white comes from any picture.
  zanpx(1 compare ${W}/demo/file-4-bit-fixed-fs.bmp ${W}/demo/file-4-bit-fixed.bmp)
  zanpx(OK run ${W}/demo/colour.bmp ${W}/bw.bmp reduce1 ordered)
  zanpx(OK info ${W}/bw.bmp)
  expect_out("1 per pixel")
  zanpx(OK convert ${W}/demo/rings.bmp ${W}/rings8.bmp --bits 8 --rle)
  zanpx(OK compare ${W}/demo/rings.bmp ${W}/rings8.bmp)
  file(GLOB leftovers ${W}/demo/.*.part)
  if(leftovers)
    message(FATAL_ERROR "temporary files left: ${leftovers}")
  endif()

elseif(MODE STREQUAL "info")
  foreach(name pal1 pal4rle pal8 pal8rle pal8topdown pal8v5 rgb16-565 rgb24 rgb32bf)
    zanpx(OK info ${S}/${name}.bmp)
    expect_out("library: ")
  endforeach()
  zanpx(OK info ${S}/pal8rle.bmp)
  expect_out("RLE8.*copied")
  # A core header is the library's to refuse, in one line and before anything is printed.
  zanpx(1 info ${S}/pal8os2.bmp)
  expect_out("^zanpx info: zanTranslateDIB: Bad argument \\(\\( dib->biSize != sizeof\\(BITMAPINFOHEADER\\) \\)\\)\n$")

elseif(MODE STREQUAL "roundtrip")
  # Lossless conversions give back the very pixels they were given.
  foreach(c "pal8|--bits;8;--rle;--palette;keep" "pal4|--bits;4;--rle;--palette;keep"
            "pal1|--bits;1;--palette;keep" "pal8gs|--bits;8;--palette;keep" "rgb24|--bits;32"
            "rgb32|--bits;24" "pal8topdown|--bits;24" "pal4rle|--bits;8;--rle;--palette;mediancut")
    string(REPLACE "|" ";" parts "${c}")
    list(GET parts 0 name)
    list(REMOVE_AT parts 0)
    zanpx(OK convert ${S}/${name}.bmp ${W}/${name}.bmp ${parts})
    zanpx(OK compare ${S}/${name}.bmp ${W}/${name}.bmp)
  endforeach()
  zanpx(OK run ${S}/rgb24.bmp ${W}/same.bmp reduce 8)
  zanpx(OK compare ${S}/rgb24.bmp ${W}/same.bmp)
  zanpx(OK run ${S}/rgb24.bmp ${W}/less.bmp reduce 2 fs)
  zanpx(1 compare ${S}/rgb24.bmp ${W}/less.bmp)
  # The same picture as 1-bit gray and as 1-bit colour-table file: same pixels, formats told apart.
  zanpx(OK compare ${S}/pal1.bmp ${S}/pal1wb.bmp)
  expect_out("^same pixels\nformats differ: 1 channel 1U and 3 channels 8U\n$")
  foreach(input rgb24 pal8 pal4rle)
    zanpx(OK convert ${S}/${input}.bmp ${W}/bw-${input}.bmp --bits 1 --dither fs)
  endforeach()

elseif(MODE STREQUAL "errors")
  # Each refusal: its exit code (2 bad arguments, 1 bad files or the library's
  # refusal), one line with the reason, and nothing written.
  set(o ${W}/out.bmp)
  set(usage "\\(usage: zanpx ")
  set(cases
    "2~run: too many arguments, from '2' on ${usage}run IN.bmp OUT.bmp addc VALUE\\)~run,${S}/rgb24.bmp,${o},addc,1,2,3"
    "2~convert: --bits needs a value \\(1\\|4\\|8\\|16\\|24\\|32\\) ${usage}convert~convert,${S}/rgb24.bmp,${o},--bits"
    "2~run: BITS\\(0\\.\\.31\\) cannot be '-1'~run,${S}/rgb24.bmp,${o},rshift,-1"
    "2~run: BITS\\(1\\.\\.8\\) cannot be '0'~run,${S}/rgb24.bmp,${o},reduce,0"
    "2~run: addc: not a whole number: 'x'~run,${S}/rgb24.bmp,${o},addc,x"
    "2~run: unknown operation 'no-such-op'~run,${S}/rgb24.bmp,${o},no-such-op"
    "2~run: missing VALUE~run,${S}/rgb24.bmp,${o},addc"
    "2~run: 'many' is not one of none\\|fs~run,${S}/rgb24.bmp,${o},reduce,2,many"
    "2~convert: --bits: '7' is not one of~convert,${S}/rgb24.bmp,${o},--bits,7"
    "2~convert: unknown option '--sharp'~convert,${S}/rgb24.bmp,${o},--sharp"
    "2~convert: --bits given twice~convert,${S}/rgb24.bmp,${o},--bits,8,--bits,4"
    "2~convert: --rle needs --bits 8 or --bits 4~convert,${S}/rgb24.bmp,${o},--rle"
    "2~convert: --dither: every level of this picture fits a 24-bit file~convert,${S}/rgb24.bmp,${o},--dither,fs"
    "2~convert: --dither writes the fixed colour table~convert,${S}/rgb24.bmp,${o},--bits,4,--dither,fs,--palette,keep"
    "2~convert: --palette keep needs an input file with a 4-bit colour table~convert,${S}/rgb24.bmp,${o},--bits,4,--palette,keep"
    "2~convert: ${W} is a folder. the output is a file~convert,${S}/rgb24.bmp,${W}"
    "2~info: missing FILE.bmp~info"
    "2~ops: too many arguments~ops,x"
    "2~frobnicate: unknown command~frobnicate"
    "1~convert: cannot open ${W}/missing.bmp~convert,${W}/missing.bmp,${o}"
    "1~convert: .*e2e.cmake: not a BMP file~convert,${CMAKE_CURRENT_LIST_FILE},${o}"
    "1~convert: zanTranslateDIB: Bad argument~convert,${S}/pal8os2.bmp,${o}"
    "1~run: zanReduceBits: Bad argument \\(Jittering is incompatible with dithering operation for 1U destination image\\)~run,${S}/rgb24.bmp,${o},reduce1,fs,3")
  # A case is "exit code~message pattern~arguments, separated by commas".
  foreach(c IN LISTS cases)
    string(REPLACE "~" ";" parts "${c}")
    list(GET parts 0 code)
    list(GET parts 1 regex)
    list(GET parts 2 args)
    string(REPLACE "," ";" args "${args}")
    zanpx(${code} ${args})
    expect_out("^zanpx ${regex}[^\n]*\n$")
    expect_only(${W})
  endforeach()

elseif(MODE STREQUAL "files")
  # A file cut short is refused, not read as black.
  find_program(HEAD head)
  if(HEAD)
    foreach(n 100 5000)
      execute_process(COMMAND ${HEAD} -c ${n} ${S}/rgb24.bmp OUTPUT_FILE ${W}/cut${n}.bmp)
      zanpx(1 convert ${W}/cut${n}.bmp ${W}/out.bmp)
      expect_out("^zanpx convert: .*cut${n}.bmp: truncated file: the pixel data ends at byte 24630, the file at byte ${n}\n$")
    endforeach()
    file(REMOVE ${W}/cut100.bmp ${W}/cut5000.bmp)
  endif()
  # A file of the user's named like a temporary one is left alone.
  file(WRITE ${W}/out.bmp.part "mine")
  zanpx(OK convert ${S}/rgb24.bmp ${W}/out.bmp)
  file(READ ${W}/out.bmp.part mine)
  if(NOT mine STREQUAL "mine")
    message(FATAL_ERROR "out.bmp.part was changed")
  endif()
  # Writers racing for one output leave one whole file, never none.
  foreach(round RANGE 5)
    execute_process(COMMAND ${ZANPX} convert ${S}/rgb24.bmp ${W}/race.bmp
                    COMMAND ${ZANPX} convert ${S}/pal8.bmp ${W}/race.bmp
                    COMMAND ${ZANPX} convert ${S}/rgb24.bmp ${W}/race.bmp --bits 32)
    execute_process(COMMAND ${ZANPX} compare ${S}/rgb24.bmp ${W}/race.bmp RESULT_VARIABLE a OUTPUT_QUIET)
    execute_process(COMMAND ${ZANPX} compare ${S}/pal8.bmp ${W}/race.bmp RESULT_VARIABLE b OUTPUT_QUIET)
    if(NOT a EQUAL 0 AND NOT b EQUAL 0)
      message(FATAL_ERROR "round ${round}: race.bmp is neither input")
    endif()
  endforeach()
  # Stopped part way, a run takes its temporary file with it.
  find_program(TIMEOUT timeout)
  if(TIMEOUT)
    foreach(after 0.05 0.2 0.5)
      execute_process(COMMAND ${TIMEOUT} -s TERM ${after} ${ZANPX} demo ${W}/stopped OUTPUT_QUIET ERROR_QUIET)
      file(GLOB left ${W}/stopped/.*.part)
      if(left)
        message(FATAL_ERROR "stopped after ${after} s, left ${left}")
      endif()
    endforeach()
    file(REMOVE_RECURSE ${W}/stopped)
  endif()
  expect_only(${W} out.bmp out.bmp.part race.bmp)
else()
  message(FATAL_ERROR "unknown MODE ${MODE}")
endif()
