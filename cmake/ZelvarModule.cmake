# One module = one folder = one target, and the build refuses what the architecture forbids.
#
#   zelvar_module(layout LAYER 7
#     QT                                   # uses Qt: moc runs, the small precompiled header is shared
#     DEPENDS  platform_ui layout_core     # part of this module's headers
#     PRIVATE  settings                    # used by its .cpp files only
#     EXTERNAL Qt6::Widgets                # other libraries in its headers; EXTERNAL_PRIVATE for the .cpp files only
#     PUBLIC_HEADERS cdxCDynamicWnd.h ...  # for applications: these are installed, with all that they include
#     PRIVATE_HEADERS                      # or: nothing of it is installed
#     INNER database                       # folders inside it that belong to it, headers "zelvar/<folder>/<inner>/Name.h"
#     OWN_OPTIONS                          # is compiled with options of its own: no shared precompiled header
#     SOURCES  cdxCDynamicWnd.cpp ...)
#
# - A module may only name modules of a lower LAYER: a cycle cannot be written down.
# - Headers are reached as "zelvar/<folder>/Name.h" through an include directory that holds that one folder,
#   so an include of a module that is not linked does not compile.
include(ZelvarWarnings)
define_property(TARGET PROPERTY ZELVAR_LAYER BRIEF_DOCS "layer of a module" FULL_DOCS "layer of a module")
define_property(TARGET PROPERTY ZELVAR_PUBLIC_HEADERS BRIEF_DOCS "includes for applications" FULL_DOCS "as they are written")

function(zelvar_module name)
  cmake_parse_arguments(ARG "QT;PRIVATE_HEADERS;OWN_OPTIONS" "LAYER;FOLDER" "PUBLIC_HEADERS;DEPENDS;PRIVATE;EXTERNAL;EXTERNAL_PRIVATE;INNER;SOURCES" ${ARGN})
  if(NOT ARG_FOLDER)
    set(ARG_FOLDER ${name})
  endif()
  add_library(zelvar_${name} STATIC ${ARG_SOURCES})
  add_library(zelvar::${name} ALIAS zelvar_${name})
  set_target_properties(zelvar_${name} PROPERTIES ZELVAR_LAYER ${ARG_LAYER} POSITION_INDEPENDENT_CODE ON)

  foreach(dependency IN LISTS ARG_DEPENDS ARG_PRIVATE)
    if(NOT TARGET zelvar_${dependency})
      message(FATAL_ERROR "${name}: module '${dependency}' does not exist yet; modules are added bottom up")
    endif()
    get_target_property(layer zelvar_${dependency} ZELVAR_LAYER)
    if(NOT layer LESS ARG_LAYER)
      message(FATAL_ERROR "${name} (layer ${ARG_LAYER}) may not use ${dependency} (layer ${layer})")
    endif()
  endforeach()
  list(TRANSFORM ARG_DEPENDS PREPEND zelvar::)
  list(TRANSFORM ARG_PRIVATE PREPEND zelvar::)
  target_link_libraries(zelvar_${name}
    PUBLIC ${ARG_DEPENDS} ${ARG_EXTERNAL}
    PRIVATE ${ARG_PRIVATE} ${ARG_EXTERNAL_PRIVATE} zelvar_warnings)
  if(ARG_QT)
    target_link_libraries(zelvar_${name} PUBLIC Qt6::Core Qt6::Gui Qt6::Widgets)
    set_target_properties(zelvar_${name} PROPERTIES AUTOMOC ON AUTORCC ON)
    zelvar_share_pch(zelvar_${name})
  elseif(NOT ARG_OWN_OPTIONS)
    zelvar_share_core_pch(zelvar_${name})
  endif()

  # The include directory that shows this folder's headers and nothing else, not even those of a folder inside it.
  list(TRANSFORM ARG_INNER APPEND "/*.h" OUTPUT_VARIABLE inner)
  file(GLOB headers RELATIVE "${CMAKE_CURRENT_SOURCE_DIR}" CONFIGURE_DEPENDS *.h ${inner})
  set(window "${CMAKE_BINARY_DIR}/include/${name}")
  file(REMOVE_RECURSE "${window}")
  foreach(folder IN LISTS ARG_INNER ITEMS .)
    file(MAKE_DIRECTORY "${window}/zelvar/${ARG_FOLDER}/${folder}")
  endforeach()
  foreach(header IN LISTS headers)
    file(CREATE_LINK "${CMAKE_CURRENT_SOURCE_DIR}/${header}" "${window}/zelvar/${ARG_FOLDER}/${header}" SYMBOLIC)
  endforeach()
  target_include_directories(zelvar_${name} PUBLIC "${window}")
  if(NOT ARG_PRIVATE_HEADERS AND NOT ARG_PUBLIC_HEADERS)
    message(FATAL_ERROR "${name}: say PUBLIC_HEADERS or PRIVATE_HEADERS")
  endif()
  if(ARG_PUBLIC_HEADERS)
    list(TRANSFORM ARG_PUBLIC_HEADERS PREPEND "zelvar/${ARG_FOLDER}/" OUTPUT_VARIABLE includes)
    set_target_properties(zelvar_${name} PROPERTIES ZELVAR_PUBLIC_HEADERS "${includes}")
    install(FILES ${ARG_PUBLIC_HEADERS} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/zelvar/${ARG_FOLDER}" COMPONENT dev)
  endif()

  if(ZELVAR_CHECK_HEADERS)
    zelvar_check_headers(${name} ${ARG_FOLDER} ${headers})
  endif()
endfunction()

# A precompiled header, which targets with the same options read in place of parsing what is in it:
# zelvar_pch(name LINK libraries... HEADERS <functional> ...)
function(zelvar_pch name)
  cmake_parse_arguments(ARG "" "" "LINK;OPTIONS;HEADERS" ${ARGN})
  file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/pch/${name}.cpp" CONTENT "// The owner of a precompiled header.\n")
  add_library(${name} STATIC "${CMAKE_BINARY_DIR}/pch/${name}.cpp")
  set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  target_link_libraries(${name} PRIVATE ${ARG_LINK} zelvar_warnings)
  target_compile_options(${name} PRIVATE -fpch-preprocess ${ARG_OPTIONS})
  target_precompile_headers(${name} PRIVATE ${ARG_HEADERS})
endfunction()
function(zelvar_use_pch target name)
  target_compile_options(${target} PRIVATE -fpch-preprocess)
  target_precompile_headers(${target} REUSE_FROM ${name})
endfunction()

# The standard headers that rooms without the toolkit read most.
set(ZELVAR_CORE_HEADERS <algorithm> <array> <cstring> <functional> <map> <memory> <mutex> <optional> <string> <tuple> <utility> <vector>)
function(zelvar_share_core_pch target)
  if(NOT TARGET zelvar_core_pch)
    zelvar_pch(zelvar_core_pch HEADERS ${ZELVAR_CORE_HEADERS})
  endif()
  zelvar_use_pch(${target} zelvar_core_pch)
endfunction()

# The Qt headers that nearly every widget source reads, parsed once.
set(ZELVAR_WIDGET_HEADERS
  <functional> <map> <memory> <optional> <string> <vector>
  <QtCore/QEvent> <QtCore/QString> <QtCore/QTimer> <QtGui/QPainter> <QtGui/QMouseEvent>
  <QtWidgets/QApplication> <QtWidgets/QDialog> <QtWidgets/QWidget> <QtWidgets/QAbstractScrollArea>)
function(zelvar_share_pch target)
  if(NOT TARGET zelvar_widgets_pch)
    zelvar_pch(zelvar_widgets_pch LINK Qt6::Core Qt6::Gui Qt6::Widgets HEADERS ${ZELVAR_WIDGET_HEADERS})
  endif()
  zelvar_use_pch(${target} zelvar_widgets_pch)
endfunction()

# Every header compiles on its own, with nothing but the module's PUBLIC dependencies.
function(zelvar_check_headers name folder)
  if(NOT ARGN)
    return()
  endif()
  # One source a header, so that no header leans on what another has included before it.
  foreach(header IN LISTS ARGN)
    set(check "${CMAKE_CURRENT_BINARY_DIR}/header_check/${header}.cpp")
    file(CONFIGURE OUTPUT "${check}" CONTENT "#include \"zelvar/${folder}/${header}\" // IWYU pragma: keep\n")
    list(APPEND checks "${check}")
  endforeach()
  add_library(zelvar_${name}_headers OBJECT ${checks})
  target_link_libraries(zelvar_${name}_headers PRIVATE zelvar::${name} zelvar_warnings)
endfunction()
