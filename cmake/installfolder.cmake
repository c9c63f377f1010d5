# `cmake --install` makes a complete install folder; the program runs with it as its working directory.
if(TARGET Kestrane_P3D)
  install(TARGETS Kestrane_P3D kestrane-data RUNTIME DESTINATION .)
endif()
install(DIRECTORY docs/ DESTINATION docs PATTERN "images" EXCLUDE)
install(DIRECTORY DESTINATION input)
install(DIRECTORY DESTINATION airports)
