cmake_minimum_required(VERSION 3.25)
# Fails when a file under SOURCE_ROOT includes a header from a layer above
# its own, or when an engine includes a system or Qt header.
#   cmake -DSOURCE_ROOT=<src folder> -P LayerCheck.cmake
#
# The layers, bottom to top. A folder may include from the folders listed for
# it; a folder missing from this table is an error, so a new folder has to be
# placed in a layer before it builds.
set(allowed_core core)
set(allowed_platform core platform)
set(allowed_effects core platform effects)
# The built-in decoder stands alone: it sees nothing but itself.
set(allowed_mp3_decoder mp3/decoder)
set(allowed_mp3 core platform mp3 mp3/decoder)
set(allowed_lyrics core platform lyrics)
set(allowed_playback core platform effects mp3 mp3/decoder lyrics playback)
set(allowed_capture ${allowed_playback} capture)
set(allowed_session ${allowed_capture} session)
set(allowed_app_cli ${allowed_session} app/cli)
set(allowed_app_gui ${allowed_session} app/gui)
set(allowed_app ${allowed_session} app/cli app/gui app)

# Only platform/ and the front ends talk to the system; the engines build
# and test without a display or a sound server.
set(engines core effects mp3 mp3/decoder lyrics playback capture session)
set(system_header_pattern "^(Q|.*/|unistd\\.h$|fcntl\\.h$|pwd\\.h$|poll\\.h$|dlfcn\\.h$|signal\\.h$)")

if(NOT SOURCE_ROOT)
    message(FATAL_ERROR "LayerCheck: SOURCE_ROOT is not set")
endif()
get_filename_component(SOURCE_ROOT ${SOURCE_ROOT} ABSOLUTE)

file(GLOB_RECURSE files RELATIVE ${SOURCE_ROOT} ${SOURCE_ROOT}/*.h ${SOURCE_ROOT}/*.cpp)
set(faults "")
foreach(file IN LISTS files)
    get_filename_component(folder ${file} DIRECTORY)
    string(REPLACE "/" "_" key ${folder})
    if(NOT DEFINED allowed_${key})
        list(APPEND faults "${file}: folder ${folder} belongs to no layer")
        continue()
    endif()
    file(STRINGS ${SOURCE_ROOT}/${file} includes REGEX "^[ \t]*#[ \t]*include[ \t]*[<\"]")
    foreach(line IN LISTS includes)
        if(line MATCHES "\"([^\"]+)\"")
            get_filename_component(target ${CMAKE_MATCH_1} DIRECTORY)
            if(NOT target IN_LIST allowed_${key})
                list(APPEND faults "${file}: includes ${CMAKE_MATCH_1}, above or beside ${folder}")
            endif()
        elseif(line MATCHES "<([^>]+)>" AND folder IN_LIST engines)
            set(header ${CMAKE_MATCH_1})
            if(header MATCHES "${system_header_pattern}")
                list(APPEND faults "${file}: engine includes system header <${header}>")
            endif()
        endif()
    endforeach()
endforeach()

if(faults)
    list(JOIN faults "\n  " text)
    message(FATAL_ERROR "Layering broken:\n  ${text}")
endif()
