# vesk_test(NAME SOURCES... [LIBRARIES ...] [LABELS ...])
#
# One test program of Qt Test, registered with ctest. It runs without a display and writes settings
# and data below a folder of its own; what it starts must end within the time limit.
function(vesk_test name)
  cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES;LABELS" ${ARGN})
  add_executable(${name} ${arg_SOURCES} ${arg_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE vesk-core Qt6::Test vesk-options ${arg_LIBRARIES})
  # The waiting macros of Qt Test narrow durations.
  set_property(SOURCE ${arg_SOURCES} ${arg_UNPARSED_ARGUMENTS} APPEND PROPERTY COMPILE_OPTIONS -Wno-conversion)
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES
    TIMEOUT 300
    LABELS "${arg_LABELS}"
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;QT_QUICK_BACKEND=software;LC_ALL=C.UTF-8")
endfunction()
