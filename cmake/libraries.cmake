# Third-party libraries under one short name each: kst_library_<name>.
find_package(Threads REQUIRED)
find_package(fmt REQUIRED)
find_package(pugixml REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(CURL REQUIRED)
if(WIN32)
  find_package(libzip REQUIRED)
else()
  # libzip's own package file wants its command line tools installed.
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(LIBZIP REQUIRED IMPORTED_TARGET libzip)
  find_package(Qt6 QUIET COMPONENTS Widgets)
endif()

foreach(name fmt pugixml json utf8cpp asio curl zip)
  add_library(kst_library_${name} INTERFACE)
endforeach()
target_link_libraries(kst_library_fmt INTERFACE fmt::fmt)
target_link_libraries(kst_library_pugixml INTERFACE pugixml::pugixml)
target_link_libraries(kst_library_json INTERFACE nlohmann_json::nlohmann_json)
target_link_libraries(kst_library_asio INTERFACE Threads::Threads)
# Whether this version of Asio sees aligned_alloc depends on what a file includes before it: without it everywhere,
# every file frees as every other allocates.
target_compile_definitions(kst_library_asio INTERFACE ASIO_STANDALONE ASIO_NO_DEPRECATED
                           ASIO_DISABLE_STD_ALIGNED_ALLOC)
if(WIN32)
  target_link_libraries(kst_library_asio INTERFACE ws2_32 mswsock)
endif()
target_link_libraries(kst_library_curl INTERFACE CURL::libcurl)
target_link_libraries(kst_library_zip INTERFACE $<IF:$<BOOL:${WIN32}>,libzip::zip,PkgConfig::LIBZIP>)

# The stand-in servers only. On Windows it is a header, without OpenSSL.
add_library(kst_library_httplib INTERFACE)
if(WIN32)
  target_link_libraries(kst_library_httplib INTERFACE ws2_32 Threads::Threads)
else()
  target_compile_definitions(kst_library_httplib INTERFACE CPPHTTPLIB_OPENSSL_SUPPORT)
  target_link_libraries(kst_library_httplib INTERFACE cpp-httplib ssl crypto Threads::Threads)
endif()

# Fuzz targets alone need no window.
if(Qt6_FOUND AND (KST_TESTS OR NOT KST_FUZZ))
  set(KST_WINDOW_TOOLKIT Qt6::Widgets)
endif()
