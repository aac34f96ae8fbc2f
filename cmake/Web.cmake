# The browser build (the `web` preset, emscripten's toolchain): its libraries
# and the site it makes.
#
# Box2D and expat are built for wasm from Debian's source packages by
# scripts/setup-web into build/wasm-deps/prefix. nlohmann-json and CLI11 are
# header-only Debian packages; the compiler sees them through a folder of
# their own, so no other host header reaches it.

set(TWINLANES_WASM_PREFIX "${CMAKE_SOURCE_DIR}/build/wasm-deps/prefix"
    CACHE PATH "Box2D and expat built for wasm (scripts/setup-web)")
if(NOT EXISTS "${TWINLANES_WASM_PREFIX}/.box2d-built" OR
   NOT EXISTS "${TWINLANES_WASM_PREFIX}/.expat-built")
  message(FATAL_ERROR "Box2D and expat for wasm are missing: run scripts/setup-web (make web does)")
endif()
# Only our prefix: emscripten's own SDL2 config would otherwise answer too.
list(PREPEND CMAKE_FIND_ROOT_PATH "${TWINLANES_WASM_PREFIX}")
list(PREPEND CMAKE_PREFIX_PATH "${TWINLANES_WASM_PREFIX}")
find_package(box2d 2.4 REQUIRED CONFIG)
find_package(EXPAT 2.5 REQUIRED MODULE)

set(TWINLANES_HOST_HEADERS "${CMAKE_BINARY_DIR}/host-headers")
file(MAKE_DIRECTORY "${TWINLANES_HOST_HEADERS}")
foreach(dir IN ITEMS nlohmann CLI)
  if(NOT EXISTS "/usr/include/${dir}")
    message(FATAL_ERROR "/usr/include/${dir} is missing: run scripts/setup")
  endif()
  file(CREATE_LINK "/usr/include/${dir}" "${TWINLANES_HOST_HEADERS}/${dir}" SYMBOLIC)
endforeach()
add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
set_target_properties(nlohmann_json::nlohmann_json PROPERTIES
  INTERFACE_INCLUDE_DIRECTORIES "${TWINLANES_HOST_HEADERS}")
add_library(CLI11::CLI11 INTERFACE IMPORTED)
set_target_properties(CLI11::CLI11 PROPERTIES
  INTERFACE_INCLUDE_DIRECTORIES "${TWINLANES_HOST_HEADERS}")

# nlohmann-json throws on bad input: exceptions on at compile and link time.
add_compile_options(-fexceptions)
add_link_options(-fexceptions)

# Where the site is assembled: build/web, whatever the preset's build folder.
set(TWINLANES_SITE_DIR "${CMAKE_SOURCE_DIR}/build/web" CACHE PATH "Where the web build puts the site")

add_compile_options(-Wall -Wextra -Wpedantic -Werror)
set(TWINLANES_RESOURCES "${CMAKE_SOURCE_DIR}/resources")

# The backend of this build; the portable kit links `kit_backend`.
set(TWINLANES_BACKEND web)
add_library(kit_backend INTERFACE)
target_link_libraries(kit_backend INTERFACE kit_backend_web)

# The portable modules, lowest layer first, the browser backend, and the
# site (src/app/web), whose program takes the app module's portable parts.
set(TWINLANES_WEB_MODULES
  kit/foundation kit/scene kit/ui kit/render kit/backends/files kit/backends/web
  xml ui names game rating adsdk ads app/web)
foreach(module IN LISTS TWINLANES_WEB_MODULES)
  add_subdirectory(src/${module})
endforeach()
