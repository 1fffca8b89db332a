# Hidden visibility does not reach instantiations of the standard library's templates. They would be
# exported, and a program's own could then be bound in their place.
foreach(library vel nolbconf vellog velmq diamond)
  target_link_options(${library} PRIVATE -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/hide_std.map)
  set_property(TARGET ${library} APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/hide_std.map)
endforeach()
