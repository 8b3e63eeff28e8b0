# Rebuilds the 32-bit import library after a --kill-at link. The linker's own
# import library would then name the plain symbols (zanAdd), while callers
# compiled against the header reference the standard-call forms (_zanAdd@12);
# dlltool -k makes one that maps the decorated symbols onto the plain exports.
# An export without its @N decoration is not standard-call and fails the build.
#   cmake -DDEF=... -DDLLTOOL=... -DDLL_NAME=zanPX.dll -DIMPLIB=... -P StdcallImportLib.cmake
file(STRINGS "${DEF}" lines)
set(out "EXPORTS\n")
foreach(line IN LISTS lines)
  # "    zanAdd = zanAdd@12 @1" -> "zanAdd@12"
  if(line MATCHES "^[ \t]*([A-Za-z_][A-Za-z0-9_]*)[ \t]*=[ \t]*([A-Za-z_][A-Za-z0-9_]*@[0-9]+)")
    string(APPEND out "    ${CMAKE_MATCH_2}\n")
  elseif(line MATCHES "^[ \t]*([A-Za-z_][A-Za-z0-9_]*)[ \t]+@[0-9]+")
    # No @N: the export is not standard-call, and a host would unbalance its stack.
    list(APPEND notStdcall ${CMAKE_MATCH_1})
  endif()
endforeach()
if(notStdcall)
  message(FATAL_ERROR "exports without the standard calling convention: ${notStdcall}")
endif()
file(WRITE "${DEF}.imp" "${out}")
execute_process(COMMAND "${DLLTOOL}" -k -d "${DEF}.imp" -D "${DLL_NAME}" -l "${IMPLIB}"
                RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "dlltool failed (${rc}) making ${IMPLIB}")
endif()
