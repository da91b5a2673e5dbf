# Dependencies between the source folders point one way:
#   plugin -> mainwindow -> {editor, highlight, dialogs, compile} -> hostapi
# Fails when a file includes a header of a folder it must not see (the
# headers a form generates count as the form's folder's).
# Run as: cmake -DSOURCE_DIR=<src> -P check_includes.cmake

cmake_minimum_required(VERSION 3.16)

function(headers_of folder out)
    file(GLOB headers RELATIVE ${SOURCE_DIR}/${folder} ${SOURCE_DIR}/${folder}/*.h)
    file(GLOB forms RELATIVE ${SOURCE_DIR}/${folder} ${SOURCE_DIR}/${folder}/*.ui)
    foreach(form IN LISTS forms)
        string(REGEX REPLACE "\\.ui$" ".h" form "${form}")
        list(APPEND headers "ui_${form}")
    endforeach()
    set(${out} ${headers} PARENT_SCOPE)
endfunction()

set(unseen_hostapi editor highlight dialogs compile mainwindow plugin)
set(unseen_editor highlight dialogs compile mainwindow plugin)
set(unseen_highlight editor dialogs compile mainwindow plugin)
set(unseen_dialogs editor highlight compile mainwindow plugin)
set(unseen_compile editor highlight dialogs mainwindow plugin)
set(unseen_mainwindow plugin)

set(violations "")
foreach(folder hostapi editor highlight dialogs compile mainwindow)
    set(forbidden "")
    foreach(other IN LISTS unseen_${folder})
        headers_of(${other} headers)
        list(APPEND forbidden ${headers})
    endforeach()
    file(GLOB sources ${SOURCE_DIR}/${folder}/*.h ${SOURCE_DIR}/${folder}/*.cpp)
    foreach(source IN LISTS sources)
        file(STRINGS ${source} includes REGEX "^[ \t]*#[ \t]*include[ \t]*[\"<]")
        foreach(line IN LISTS includes)
            string(REGEX REPLACE "^[ \t]*#[ \t]*include[ \t]*[\"<]([^\">]*)[\">].*" "\\1" header "${line}")
            get_filename_component(header "${header}" NAME)
            if(header IN_LIST forbidden)
                file(RELATIVE_PATH shown ${SOURCE_DIR} ${source})
                string(APPEND violations "  ${shown} includes ${header}\n")
            endif()
        endforeach()
    endforeach()
endforeach()

if(violations)
    message(FATAL_ERROR "Includes against the direction of dependencies:\n${violations}")
endif()
message(STATUS "Includes follow the direction of dependencies")
