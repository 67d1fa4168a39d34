cmake_minimum_required(VERSION 3.25)
# Proves that LayerCheck.cmake refuses what it should: a tree that keeps the
# layers passes, and the same tree with one wrong include, or with a system
# header in an engine, fails naming the file.
#   cmake -DCHECK=<LayerCheck.cmake> -DWORK_DIR=<scratch folder> -P LayerCheckSelfTest.cmake

function(write_tree root wrong_line)
    file(REMOVE_RECURSE ${root})
    file(WRITE ${root}/core/ring.h "#pragma once\n#include <atomic>\n")
    file(WRITE ${root}/playback/player.h "#pragma once\n#include \"core/ring.h\"\n")
    file(WRITE ${root}/capture/recorder.cpp "#include \"playback/player.h\"\n${wrong_line}\n")
endfunction()

function(run_check root expect_pass expected_text)
    execute_process(COMMAND ${CMAKE_COMMAND} -DSOURCE_ROOT=${root} -P ${CHECK}
                    RESULT_VARIABLE result ERROR_VARIABLE output)
    if(expect_pass AND NOT result EQUAL 0)
        message(FATAL_ERROR "a layered tree was refused:\n${output}")
    endif()
    if(NOT expect_pass AND result EQUAL 0)
        message(FATAL_ERROR "a wrong include passed: ${expected_text}")
    endif()
    if(NOT expect_pass AND NOT output MATCHES "${expected_text}")
        message(FATAL_ERROR "the refusal does not name ${expected_text}:\n${output}")
    endif()
endfunction()

set(root ${WORK_DIR}/layer_check_tree)
write_tree(${root} "")
run_check(${root} TRUE "")
write_tree(${root} "")
file(APPEND ${root}/core/ring.h "#include \"capture/recorder.h\"\n")
run_check(${root} FALSE "core/ring.h: includes capture/recorder.h")
write_tree(${root} "#include <QWidget>")
run_check(${root} FALSE "capture/recorder.cpp: engine includes system header <QWidget>")
write_tree(${root} "#include \"session/take.h\"")
run_check(${root} FALSE "capture/recorder.cpp: includes session/take.h")
file(REMOVE_RECURSE ${root})
