# What Windows reads from an .exe: icon, version, and the manifest that gives it the themed controls, sharp pixels and
# long paths. The tests take it as well, so that their windows and files behave as the program's.
if(WIN32)
  enable_language(RC)
  string(REPLACE "." "," KST_VERSION_NUMBERS "${PROJECT_VERSION},0")
  configure_file(${CMAKE_SOURCE_DIR}/src/platform/win32/kestrane.rc.in ${CMAKE_BINARY_DIR}/kestrane.rc @ONLY)
  set_source_files_properties(${CMAKE_BINARY_DIR}/kestrane.rc PROPERTIES OBJECT_DEPENDS
    "${CMAKE_SOURCE_DIR}/src/platform/win32/kestrane.ico;${CMAKE_SOURCE_DIR}/src/platform/win32/kestrane.manifest")
  add_library(kst_resources OBJECT ${CMAKE_BINARY_DIR}/kestrane.rc)
endif()
