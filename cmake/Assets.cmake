# Pictures are kept as SVG and rendered here: "name.png" at the size of the 1280 x 720 screen and
# "name@3x.png" three times as fine for outputs up to 4K. assets/Themes goes to Themes/ beside the
# program, assets/graphics to the platform graphics folder.
find_program(RSVG_CONVERT rsvg-convert)
set(asset_outputs "")
file(GLOB_RECURSE asset_svgs CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/assets/Themes/*.svg ${CMAKE_SOURCE_DIR}/assets/graphics/*.svg)
if(asset_svgs AND NOT RSVG_CONVERT)
  message(FATAL_ERROR "rsvg-convert is missing (package librsvg2-bin)")
endif()
foreach(svg ${asset_svgs})
  file(RELATIVE_PATH relative ${CMAKE_SOURCE_DIR}/assets ${svg})
  string(REGEX REPLACE "\\.svg$" "" stem ${relative})
  set(png ${CMAKE_BINARY_DIR}/${stem}.png)
  set(fine ${CMAKE_BINARY_DIR}/${stem}@3x.png)
  get_filename_component(folder ${png} DIRECTORY)
  add_custom_command(
    OUTPUT ${png} ${fine}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
    COMMAND ${RSVG_CONVERT} -o ${png} ${svg}
    COMMAND ${RSVG_CONVERT} -z 3 -o ${fine} ${svg}
    DEPENDS ${svg}
    VERBATIM)
  list(APPEND asset_outputs ${png} ${fine})
endforeach()
# The colours of each theme.
file(GLOB_RECURSE asset_configurations CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/assets/Themes/theme.cfg ${CMAKE_SOURCE_DIR}/assets/graphics/theme.cfg)
foreach(configuration ${asset_configurations})
  file(RELATIVE_PATH relative ${CMAKE_SOURCE_DIR}/assets ${configuration})
  add_custom_command(
    OUTPUT ${CMAKE_BINARY_DIR}/${relative}
    COMMAND ${CMAKE_COMMAND} -E copy ${configuration} ${CMAKE_BINARY_DIR}/${relative}
    DEPENDS ${configuration}
    VERBATIM)
  list(APPEND asset_outputs ${CMAKE_BINARY_DIR}/${relative})
endforeach()
add_custom_target(nuvid_assets DEPENDS ${asset_outputs})
