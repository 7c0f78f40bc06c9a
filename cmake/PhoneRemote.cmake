# The phone remote's server, a module that is loaded when a phone connects: its libraries cost four megabytes that
# only those pay who use one. The page's files are built into it.
set(page ${CMAKE_SOURCE_DIR}/host/remote/page)
set(page_files ${page}/index.html ${page}/remote.css ${page}/remote.js ${page}/manifest.webmanifest ${page}/icon.svg)
set(page_icons "")
foreach(size 180 192 512)
  set(icon ${CMAKE_BINARY_DIR}/page/icon-${size}.png)
  add_custom_command(OUTPUT ${icon} DEPENDS ${page}/icon.svg COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/page
    COMMAND ${RSVG_CONVERT} -w ${size} -h ${size} -o ${icon} ${page}/icon.svg)
  list(APPEND page_icons ${icon})
endforeach()
set(page_source ${CMAKE_BINARY_DIR}/page/PageData.cpp)
add_custom_command(OUTPUT ${page_source} DEPENDS ${page_files} ${page_icons} ${CMAKE_SOURCE_DIR}/cmake/EmbedPage.cmake
  COMMAND ${CMAKE_COMMAND} -DOUTPUT=${page_source} "-DFILES=${page_files};${page_icons}" -P ${CMAKE_SOURCE_DIR}/cmake/EmbedPage.cmake VERBATIM)

nuvid_room(remoteserver host/remote/server SEES platform host/base host/remote/RemoteServer.h LINKS PkgConfig::SOUP PkgConfig::JPEG)
target_sources(nuvid_remoteserver PRIVATE ${page_source} host/base/JsonText.cpp)
target_compile_options(nuvid_remoteserver PRIVATE -fPIC)
add_library(nuvid_remotemodule MODULE host/remote/server/Module.cpp)
target_include_directories(nuvid_remotemodule PRIVATE ${CMAKE_BINARY_DIR}/include/remoteserver)
target_compile_options(nuvid_remotemodule PRIVATE -fPIC)
target_link_libraries(nuvid_remotemodule PRIVATE nuvid_remoteserver PkgConfig::SOUP)
set_target_properties(nuvid_remotemodule PROPERTIES PREFIX "" OUTPUT_NAME nuvid-remote LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})
