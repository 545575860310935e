# Renders the logo, assets/varnelle.svg: icon resources on Windows, a PNG beside the program elsewhere. Needs rsvg-convert, and icotool for Windows.
find_program(RSVG_CONVERT rsvg-convert REQUIRED)
set(LOGO ${CMAKE_SOURCE_DIR}/assets/varnelle.svg)
set(ICON_FOLDER ${CMAKE_BINARY_DIR}/icons)
file(MAKE_DIRECTORY ${ICON_FOLDER})

# Renders one PNG of the logo, `size` pixels square, and sets `result` to its path.
function(varnelle_render size result)
  set(picture ${ICON_FOLDER}/varnelle-${size}.png)
  add_custom_command(
    OUTPUT ${picture}
    COMMAND ${RSVG_CONVERT} -w ${size} -h ${size} -o ${picture} ${LOGO}
    DEPENDS ${LOGO}
    VERBATIM)
  set(${result} ${picture} PARENT_SCOPE)
endfunction()

if(WIN32)
  find_program(ICOTOOL icotool REQUIRED)
  # Makes one icon file of the listed sizes. The largest is stored as PNG, as Windows expects for 256 pixels.
  function(varnelle_icon name)
    set(arguments "")
    set(pictures "")
    foreach(size ${ARGN})
      varnelle_render(${size} picture)
      list(APPEND pictures ${picture})
      if(size GREATER_EQUAL 256)
        list(APPEND arguments --raw=${picture})
      else()
        list(APPEND arguments ${picture})
      endif()
    endforeach()
    add_custom_command(
      OUTPUT ${ICON_FOLDER}/${name}.ico
      COMMAND ${ICOTOOL} --create -o ${ICON_FOLDER}/${name}.ico ${arguments}
      DEPENDS ${pictures}
      COMMENT "Icon ${name}.ico"
      VERBATIM)
  endfunction()
  varnelle_icon(varnelle 16 20 24 32 40 48 64 96 128 256)
  varnelle_icon(varnelle-small 16 20 24 28)

  string(REPLACE "." "," VERSION_NUMBERS "${PROJECT_VERSION}.0")
  set_source_files_properties(src/platform/win32/varnelle.rc PROPERTIES
    OBJECT_DEPENDS "${ICON_FOLDER}/varnelle.ico;${ICON_FOLDER}/varnelle-small.ico;${CMAKE_SOURCE_DIR}/src/platform/win32/varnelle.manifest"
    INCLUDE_DIRECTORIES "${ICON_FOLDER};${CMAKE_SOURCE_DIR}/src/platform/win32"
    COMPILE_DEFINITIONS "VARNELLE_VERSION_NUMBERS=${VERSION_NUMBERS};VARNELLE_VERSION=${PROJECT_VERSION}")
else()
  varnelle_render(256 LOGO_PICTURE)
  add_custom_command(
    OUTPUT ${DIST}/varnelle.png
    COMMAND ${CMAKE_COMMAND} -E copy ${LOGO_PICTURE} ${DIST}/varnelle.png
    DEPENDS ${LOGO_PICTURE}
    COMMENT "Icon varnelle.png"
    VERBATIM)
  add_custom_target(varnelle_icon DEPENDS ${DIST}/varnelle.png)
  add_dependencies(dist varnelle_icon)
endif()
