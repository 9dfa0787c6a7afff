# Ordinary test builds (gcc, no fuzzing engine): each fuzz/<name>_fuzzer.cpp is built against
# the plain replay driver as <name>_replay, and the ctest test fuzz_replay.<name> runs it over
# the target's seeds and regression inputs:
#
#   fuzz/seeds/<name>/         small inputs that reach the target's structure
#   fuzz/regressions/<name>/   every input that ever crashed, hung or leaked, kept forever
#
# In the sanitizer build this is where the regression inputs are checked for memory errors.
# Included from tests/CMakeLists.txt; new targets are picked up by the glob.

set(LUM_FUZZ_DIR ${CMAKE_SOURCE_DIR}/fuzz)
file(GLOB LUM_REPLAY_SOURCES CONFIGURE_DEPENDS ${LUM_FUZZ_DIR}/*_fuzzer.cpp)
# Targets that read whole PDF files also replay our own small test PDFs. The rule is the one
# tools/fuzz-run uses: the name says so, or the source carries the marker line.
file(GLOB LUM_REPLAY_PDFS CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/data/*.pdf)
set(LUM_PDF_LEVEL_NAME "document|doc|pdf|xref|page|extract|text|sdf|repair|rebuild|trailer")

foreach(src IN LISTS LUM_REPLAY_SOURCES)
  get_filename_component(target ${src} NAME_WE)
  string(REGEX REPLACE "_fuzzer$" "" name ${target})
  add_executable(${name}_replay ${src} ${LUM_FUZZ_DIR}/StandaloneReplay.cpp)
  target_compile_options(${name}_replay PRIVATE ${LUM_WARNINGS})
  target_link_libraries(${name}_replay PRIVATE lum)
  file(STRINGS ${src} marked REGEX "fuzz-run: pdf-seeds")
  set(pdfs)
  if(marked OR name MATCHES "${LUM_PDF_LEVEL_NAME}")
    set(pdfs ${LUM_REPLAY_PDFS})
  endif()
  # Seeds filed under the target's full name are accepted too; a missing folder is skipped.
  add_test(NAME fuzz_replay.${name}
    COMMAND ${name}_replay --timeout=25
      ${LUM_FUZZ_DIR}/seeds/${name} ${LUM_FUZZ_DIR}/seeds/${target}
      ${LUM_FUZZ_DIR}/regressions/${name} ${LUM_FUZZ_DIR}/regressions/${target} ${pdfs})
  set_tests_properties(fuzz_replay.${name} PROPERTIES TIMEOUT 300 LABELS fuzz_replay)
endforeach()

# The harness checks itself: the replay driver against a target that misbehaves on purpose,
# and the corpus and fuzz runners against tiny fake programs.
find_package(Python3 COMPONENTS Interpreter)
if(Python3_Interpreter_FOUND)
  add_executable(harness_replay_self ${CMAKE_SOURCE_DIR}/tests/harness/ReplaySelfTarget.cpp
    ${LUM_FUZZ_DIR}/StandaloneReplay.cpp)
  target_compile_options(harness_replay_self PRIVATE ${LUM_WARNINGS})
  add_test(NAME harness.selftest
    COMMAND ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/tests/harness/harness_test.py)
  set_tests_properties(harness.selftest PROPERTIES TIMEOUT 300 LABELS harness
    ENVIRONMENT "LUM_REPLAY_SELF=$<TARGET_FILE:harness_replay_self>")
endif()
