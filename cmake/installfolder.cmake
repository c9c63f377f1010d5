# `cmake --install` makes a complete install folder; the program runs with it as its working directory.
if(TARGET Kestrane_P3D)
  install(TARGETS Kestrane_P3D kestrane-data RUNTIME DESTINATION .)
endif()
install(DIRECTORY docs/ DESTINATION docs PATTERN "images" EXCLUDE)
install(DIRECTORY DESTINATION input)

# What kestrane-data makes of the facts in data/ at build time: the world directory of airports, and in downloads/
# what a download server serves.
set(facts ${CMAKE_CURRENT_SOURCE_DIR}/data)
set(made ${CMAKE_BINARY_DIR}/made)
set(airports_made ${made}/airports/airports_p3d.xml)
set(stock_folder ${made}/downloads/P3D/archive/stock)
file(MAKE_DIRECTORY ${made}/airports ${stock_folder})
add_custom_command(OUTPUT ${airports_made} VERBATIM
                   COMMAND kestrane-data airports ${facts} ${airports_made}
                   DEPENDS kestrane-data ${facts}/airports.csv)
set(stock_made "")
file(GLOB stands CONFIGURE_DEPENDS ${facts}/stands/*.csv)
foreach(file ${stands})
  get_filename_component(airport ${file} NAME_WE)
  set(stock ${stock_folder}/${airport}.xml)
  add_custom_command(OUTPUT ${stock} VERBATIM
                     COMMAND kestrane-data stock ${facts} ${airport} ${stock}
                     DEPENDS kestrane-data ${file} ${facts}/stocktraffic.csv ${facts}/airports.csv
                             ${facts}/registrations.csv ${facts}/types.csv)
  list(APPEND stock_made ${stock})
endforeach()
# A benchmark or a fuzz target has no use for them.
if(TARGET Kestrane_P3D)
  add_custom_target(made_data ALL DEPENDS ${airports_made} ${stock_made})
  install(DIRECTORY ${made}/ DESTINATION .)
else()
  add_custom_target(made_data DEPENDS ${airports_made} ${stock_made})
endif()
