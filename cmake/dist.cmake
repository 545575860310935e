# The folder as shipped, ${DIST}: the program, the web-view library, the pages, the themes, the licence texts. Node.js
# is needed for this target only.
if(WIN32)
  set(DIST_SYSTEM windows)
  set(DIST_LIBRARY ${DIST}/libwebview.dll)
else()
  set(DIST_SYSTEM linux)
  set(DIST_LIBRARY ${DIST}/libwebview.so)
endif()

add_custom_command(
  OUTPUT ${DIST_LIBRARY}
  COMMAND node ${CMAKE_SOURCE_DIR}/tools/build_dist.mjs libraries ${DIST_SYSTEM} ${DIST}
  COMMAND ${CMAKE_COMMAND} -E touch ${DIST_LIBRARY}
  DEPENDS ${CMAKE_SOURCE_DIR}/tools/build_dist.mjs ${CMAKE_SOURCE_DIR}/package-lock.json
  COMMENT "Web-view library and licence texts"
  VERBATIM)

file(GLOB_RECURSE DIST_PAGE_SOURCES CONFIGURE_DEPENDS ui/*)
list(FILTER DIST_PAGE_SOURCES EXCLUDE REGEX "/node_modules/")
set(DIST_PAGES_STAMP ${CMAKE_BINARY_DIR}/pages.stamp)
add_custom_command(
  OUTPUT ${DIST_PAGES_STAMP}
  BYPRODUCTS ${DIST}/ui/index.html
  COMMAND node ${CMAKE_SOURCE_DIR}/tools/build_dist.mjs pages ${DIST}
  COMMAND ${CMAKE_COMMAND} -E touch ${DIST_PAGES_STAMP}
  DEPENDS ${DIST_PAGE_SOURCES} ${CMAKE_SOURCE_DIR}/tools/build_dist.mjs ${CMAKE_SOURCE_DIR}/package-lock.json
  WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
  COMMENT "Pages"
  VERBATIM)

# The themes beside the program, one from each source in assets/themes.
file(GLOB DIST_THEME_SOURCES CONFIGURE_DEPENDS assets/themes/*.json tools/themes/*.mjs)
set(DIST_THEMES "")
foreach(source ${DIST_THEME_SOURCES})
  if(source MATCHES "\\.json$")
    get_filename_component(name ${source} NAME_WE)
    list(APPEND DIST_THEMES ${DIST}/themes/${name}.vrltheme)
  endif()
endforeach()
add_custom_command(
  OUTPUT ${DIST_THEMES}
  COMMAND node ${CMAKE_SOURCE_DIR}/tools/themes/build.mjs ${DIST}/themes
  DEPENDS ${DIST_THEME_SOURCES}
  COMMENT "Themes"
  VERBATIM)

add_custom_target(dist DEPENDS ${DIST_LIBRARY} ${DIST_PAGES_STAMP} ${DIST_THEMES})
if(TARGET varnelle)
  add_dependencies(dist varnelle)
endif()
