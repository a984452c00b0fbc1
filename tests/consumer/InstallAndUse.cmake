# Installs the library into a prefix with odd characters, builds the host program against it in both ways and runs it.
#
#   cmake -DBUILD=... -DSOURCE=... -DCXX=... -DPKG_CONFIG=... -DLEVEL=... -DLIBDIR=... -DFLAGS=... -P InstallAndUse.cmake
function(step)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(result)
    message(FATAL_ERROR "failed (${result}): ${ARGV}\n${output}")
  endif()
endfunction()

function(run_host host picture)
  file(REMOVE "${picture}")
  step("${host}" "${LEVEL}" "${picture}")
  if(NOT EXISTS "${picture}")
    message(FATAL_ERROR "${host} wrote no picture")
  endif()
  file(SIZE "${picture}" size)
  if(NOT size EQUAL 2359350)  # 54 + 1024 * 768 * 3
    message(FATAL_ERROR "the picture has ${size} bytes")
  endif()
endfunction()

set(work "${BUILD}/consumer")
set(first "${BUILD}/odd prefix/x y")
set(prefix "${BUILD}/odd prefix/moved +to here")
file(REMOVE_RECURSE "${work}" "${BUILD}/odd prefix")
file(MAKE_DIRECTORY "${work}")
foreach(component runtime development)
  step("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${first}" --component ${component})
endforeach()
# An installation may be moved.
file(RENAME "${first}" "${prefix}")

step("${CMAKE_COMMAND}" -S "${SOURCE}" -B "${work}/found" "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_CXX_COMPILER=${CXX}"
  "-DCMAKE_CXX_FLAGS=${FLAGS}" -DCMAKE_BUILD_TYPE=Release)
step("${CMAKE_COMMAND}" --build "${work}/found")
run_host("${work}/found/host" "${work}/found.bmp")

set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIBDIR}/pkgconfig")
execute_process(COMMAND "${PKG_CONFIG}" --cflags --libs quasarlens8 OUTPUT_VARIABLE flags RESULT_VARIABLE result)
if(result)
  message(FATAL_ERROR "pkg-config finds no quasarlens8 in ${prefix}")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
separate_arguments(more UNIX_COMMAND "${FLAGS}")
step("${CXX}" -std=c++17 ${more} "${SOURCE}/host.cpp" ${flags} "-Wl,-rpath,${prefix}/${LIBDIR}" -o "${work}/host")
run_host("${work}/host" "${work}/pkg-config.bmp")
