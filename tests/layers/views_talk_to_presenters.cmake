# The windows reach the device and the speech services only through their presenters: no file
# under src/Widget includes a header of Hid or SpeechRec. The layers' targets cannot say this
# (the widgets see every folder below them), so the sources are read.
file(GLOB_RECURSE sources "${SOURCE_DIR}/src/Widget/*.h" "${SOURCE_DIR}/src/Widget/*.cpp")
set(offenders "")
foreach(source IN LISTS sources)
  file(STRINGS "${source}" lines REGEX "^[ \t]*#[ \t]*include[ \t]*[\"<](Hid|SpeechRec)/")
  foreach(line IN LISTS lines)
    file(RELATIVE_PATH relative "${SOURCE_DIR}" "${source}")
    string(APPEND offenders "  ${relative}: ${line}\n")
  endforeach()
endforeach()
if(offenders)
  message(FATAL_ERROR "Views include the device or speech layer; go through a presenter:\n${offenders}")
endif()
list(LENGTH sources count)
if(count EQUAL 0)
  message(FATAL_ERROR "No sources under ${SOURCE_DIR}/src/Widget")
endif()
