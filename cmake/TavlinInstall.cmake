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
target_link_libraries(libtavlin INTERFACE expat ${CMAKE_DL_LIBS})
set(headers document model platform/archive platform/foundation platform/text text ui)
if(TAVLIN_DRAWING)
  tavlin_library(tavlin-drawing drawing tavlin_platform_drawing tavlin_ui_drawing)
  target_link_libraries(tavlin-drawing INTERFACE libtavlin cairo)
  list(APPEND headers platform/drawing)
endif()
foreach(folder ${headers})
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${folder}/
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tavlin/${folder} FILES_MATCHING PATTERN "*.h")
endforeach()

install(EXPORT tavlinTargets NAMESPACE tavlin:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tavlin
  FILE tavlinTargets.cmake)
file(WRITE ${PROJECT_BINARY_DIR}/tavlinConfig.cmake
  "include(\"\${CMAKE_CURRENT_LIST_DIR}/tavlinTargets.cmake\")\n")
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tavlinConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tavlinConfig.cmake ${PROJECT_BINARY_DIR}/tavlinConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tavlin)

configure_file(cmake/tavlin.pc.in ${PROJECT_BINARY_DIR}/tavlin.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tavlin.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
