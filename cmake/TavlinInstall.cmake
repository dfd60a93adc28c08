# The installed libraries: `tavlin` is everything but the drawing, `tavlin-drawing` the rest.
# Both are found with find_package(tavlin) or pkg-config.
include(CMakePackageConfigHelpers)

function(tavlin_library target alias)
  set(objects)
  foreach(component ${ARGN})
    list(APPEND objects $<TARGET_OBJECTS:${component}>)
  endforeach()
  add_library(${target} STATIC ${objects})
  add_library(tavlin::${alias} ALIAS ${target})
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ${target} EXPORT_NAME ${alias})
  target_include_directories(${target} INTERFACE
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/tavlin>)
  target_compile_features(${target} INTERFACE cxx_std_20)
  set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX)
  install(TARGETS ${target} EXPORT tavlinTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
endfunction()

get_property(components GLOBAL PROPERTY TAVLIN_COMPONENTS)
tavlin_library(libtavlin tavlin ${components})
set_target_properties(libtavlin PROPERTIES OUTPUT_NAME tavlin)
target_link_libraries(libtavlin INTERFACE expat unistring ${CMAKE_DL_LIBS})
set(folders document model platform text ui)
# How the library is made inside; no header above needs these.
set(private_headers
  document/ContainerRewriting.h document/ItemCircles.h document/ItemCount.h
  document/NodeDataTransform.h
  model/CircleGuard.h model/EditScope.h model/EditSteps.h
  model/runtime/CheckStatePass.h model/runtime/ChildPlaces.h model/runtime/ItemLevels.h
  model/runtime/PointerScope.h model/runtime/SubtreeItems.h model/runtime/UpwardRefresh.h
  model/scan/WalkGuard.h
  model/undo/PlacedItems.h
  platform/propertylist/XmlPropertyList.h
  platform/drawing/CairoSupport.h platform/drawing/Drawing.h platform/drawing/GradientFill.h
  platform/drawing/ImagePiece.h platform/drawing/PixelArea.h platform/drawing/PngCoding.h
  platform/drawing/ShadowBlur.h
  platform/foundation/AsciiCheck.h platform/foundation/AtomicFileWriter.h
  platform/foundation/ContainerBodies.h
  platform/foundation/FileAttributes.h platform/foundation/FileHandle.h
  platform/foundation/FileReading.h platform/foundation/FileSteps.h
  platform/foundation/SignalGuard.h platform/foundation/StringBody.h
  platform/text/AttributedStringBody.h platform/text/LinkAscii.h platform/text/LinkHost.h
  platform/text/LinkNames.h platform/text/LinkScanner.h platform/text/LinkTables.h
  platform/text/LinkText.h platform/text/LinkURL.h platform/text/LinkUtf16.h
  platform/text/LoadedLibrary.h
  text/FoldedText.h)
set(drawing_headers platform/drawing/ ui/BezierPathHelpers.h ui/GradientHelpers.h
  ui/ImageHelpers.h ui/ShadowHelpers.h)
set(excluded ${private_headers})
if(TAVLIN_DRAWING)
  tavlin_library(tavlin-drawing drawing tavlin_platform_drawing tavlin_ui_drawing)
  target_link_libraries(tavlin-drawing INTERFACE libtavlin cairo)
else()
  list(APPEND excluded ${drawing_headers})
endif()
foreach(folder ${folders})
  file(GLOB_RECURSE headers RELATIVE ${PROJECT_SOURCE_DIR} CONFIGURE_DEPENDS
    ${PROJECT_SOURCE_DIR}/${folder}/*.h)
  list(FILTER headers EXCLUDE REGEX "^ui/gallery/")
  foreach(prefix ${excluded})
    string(REPLACE "." "\\." pattern ${prefix})
    list(FILTER headers EXCLUDE REGEX "^${pattern}")
  endforeach()
  foreach(header ${headers})
    get_filename_component(place ${header} DIRECTORY)
    install(FILES ${PROJECT_SOURCE_DIR}/${header}
      DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tavlin/${place})
  endforeach()
endforeach()

install(EXPORT tavlinTargets NAMESPACE tavlin:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tavlin
  FILE tavlinTargets.cmake)
file(WRITE ${PROJECT_BINARY_DIR}/tavlinConfig.cmake
  "include(\"\${CMAKE_CURRENT_LIST_DIR}/tavlinTargets.cmake\")\n")
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tavlinConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tavlinConfig.cmake ${PROJECT_BINARY_DIR}/tavlinConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tavlin)

# Relative to where the .pc files are, so that an installation may be moved.
file(RELATIVE_PATH prefix_from_pkgconfig
  "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
set(packages tavlin)
if(TAVLIN_DRAWING)
  list(APPEND packages tavlin-drawing)
endif()
foreach(package ${packages})
  configure_file(cmake/${package}.pc.in ${PROJECT_BINARY_DIR}/${package}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${package}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()

if(TAVLIN_TESTS)
  add_test(NAME installation
    COMMAND ${PROJECT_SOURCE_DIR}/scripts/check-install ${PROJECT_BINARY_DIR})
  set_tests_properties(installation PROPERTIES TIMEOUT 900)
endif()
