# Fails when a translation lacks an entry for a text of the code, or has one unfinished: the
# .ts is brought up to date with the code in a copy (lupdate), and every entry of the copy
# must carry a finished, non-empty translation.
#   cmake -DLUPDATE=<lupdate> -DSOURCES=<src> -DTS=<file.ts> -DWORK=<dir> -P check_translations.cmake
get_filename_component(name ${TS} NAME)
file(MAKE_DIRECTORY ${WORK})
configure_file(${TS} ${WORK}/${name} COPYONLY)
execute_process(COMMAND ${LUPDATE} -silent -locations none -no-obsolete ${SOURCES} -ts ${WORK}/${name}
  RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "lupdate failed on ${SOURCES}")
endif()
file(READ ${WORK}/${name} ts)
# One list element per entry (a ; in a text would split it: it is taken out first).
string(REPLACE ";" "," ts "${ts}")
string(REPLACE "</message>" ";" entries "${ts}")
set(faults 0)
set(total 0)
foreach(entry IN LISTS entries)
  if(NOT entry MATCHES "<message")
    continue()
  endif()
  math(EXPR total "${total} + 1")
  if(entry MATCHES "type=\"unfinished\"" OR entry MATCHES "<translation></translation>"
     OR entry MATCHES "<numerusform></numerusform>")
    string(REGEX MATCH "<source>([^<]*)</source>" _ "${entry}")
    message("not translated: ${CMAKE_MATCH_1}")
    math(EXPR faults "${faults} + 1")
  endif()
endforeach()
if(total EQUAL 0)
  message(FATAL_ERROR "${name}: no entry found")
endif()
if(faults GREATER 0)
  message(FATAL_ERROR "${name}: ${faults} of ${total} texts untranslated (cmake --build <build> --target update_translations, then translate them)")
endif()
message("${name}: all ${total} texts translated")
