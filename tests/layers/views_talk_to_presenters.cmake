cmake_minimum_required(VERSION 3.16)
# The windows reach the services (the device, speech, the desktop, the network, the stores) only
# through their presenters: no file under src/Widget includes a service's header. The records
# the presenters hand the views (command words, the backend's records, an installed application)
# are plain data and allowed. The layers' targets cannot say this (the widgets see every folder
# below them), so the sources are read.
set(records "Database/CommandWord.h" "Http/BackendRecords.h" "Platform/InstalledApplication.h")
file(GLOB_RECURSE sources "${SOURCE_DIR}/src/Widget/*.h" "${SOURCE_DIR}/src/Widget/*.cpp")
set(offenders "")
foreach(source IN LISTS sources)
  file(STRINGS "${source}" lines
       REGEX "^[ \t]*#[ \t]*include[ \t]*[\"<](Hid|SpeechRec|BaiduSpeech|IFlySpeech|Recorder|Platform|Http|Database)/")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE "^[^\"<]*[\"<]([^\">]*)[\">].*$" "\\1" header "${line}")
    if(NOT header IN_LIST records)
      file(RELATIVE_PATH relative "${SOURCE_DIR}" "${source}")
      string(APPEND offenders "  ${relative}: ${line}\n")
    endif()
  endforeach()
endforeach()
if(offenders)
  message(FATAL_ERROR "Views include a service below the presenters; go through a presenter:\n${offenders}")
endif()
list(LENGTH sources count)
if(count EQUAL 0)
  message(FATAL_ERROR "No sources under ${SOURCE_DIR}/src/Widget")
endif()
