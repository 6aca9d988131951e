# Installs the built tree into a temporary prefix, builds the examples against it through
# find_package (and the SQL library through pkg-config) and runs the headless example.
# Run with cmake -P; every input comes as -D: BUILD_DIR, SOURCE_DIR, WORK_DIR, VERSION,
# GENERATOR, CXX, LAUNCHER (may be empty), WIDGETS (ON/OFF), SQLITE3, PKG_CONFIG (may be empty).
cmake_minimum_required(VERSION 3.25)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    string(REPLACE ";" " " cmd "${ARGN}")
    message(FATAL_ERROR "failed (${rc}): ${cmd}\n${out}\n${err}")
  endif()
  set(out "${out}" PARENT_SCOPE)
endfunction()

function(expect text pattern what)
  if(NOT text MATCHES "${pattern}")
    message(FATAL_ERROR "${what}: expected \"${pattern}\" in:\n${text}")
  endif()
endfunction()

set(prefix ${WORK_DIR}/prefix)
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})

# The plugin goes to Qt's folder, outside the prefix; it is tested from the build tree.
foreach(component Runtime Development)
  run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix} --component ${component})
endforeach()

file(GLOB_RECURSE config ${prefix}/*/QorvexConfig.cmake)
if(NOT config)
  message(FATAL_ERROR "no QorvexConfig.cmake under ${prefix}")
endif()

run(${prefix}/bin/qorvex-sql --version)
expect("${out}" "^qorvex-sql ${VERSION}\n$" "qorvex-sql --version")

# The nested builds share the compiler and its cache with this tree.
set(common -G ${GENERATOR} -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=${CXX}
    -DCMAKE_PREFIX_PATH=${prefix})
if(LAUNCHER)
  list(APPEND common -DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER})
endif()

function(build_example name)
  run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples/${name} -B ${WORK_DIR}/${name} ${common})
  # The package must come from the prefix, never from the build tree.
  file(STRINGS ${WORK_DIR}/${name}/CMakeCache.txt dir REGEX "^Qorvex_DIR:")
  expect("${dir}" "=${prefix}/" "${name}: Qorvex_DIR")
  run(${CMAKE_COMMAND} --build ${WORK_DIR}/${name} -j2)
endfunction()

build_example(embed)
run(${SQLITE3} ${WORK_DIR}/sample.sqlite ".read ${SOURCE_DIR}/examples/sample-db.sql")
run(${WORK_DIR}/embed/qorvex-embed-example ${WORK_DIR}/sample.sqlite)
expect("${out}" "-- final:\nSELECT \\*, Orders.Total\nFROM Customers c INNER JOIN\n Orders ON c.Id=Orders.CustomerId\nWHERE Orders.Total>100\n"
       "qorvex-embed-example")

if(WIDGETS)
  build_example(qt-embed)
endif()

# pkg-config: a program on the language half alone.
if(PKG_CONFIG)
  set(ENV{PKG_CONFIG_PATH} "")
  file(GLOB_RECURSE pc ${prefix}/*/qorvex_sql.pc)
  get_filename_component(pcdir "${pc}" DIRECTORY)
  set(ENV{PKG_CONFIG_PATH} ${pcdir})
  run(${PKG_CONFIG} --modversion qorvex_sql)
  expect("${out}" "^${VERSION}\n$" "pkg-config --modversion")
  run(${PKG_CONFIG} --cflags --libs qorvex_sql)
  string(STRIP "${out}" flags)
  separate_arguments(flags UNIX_COMMAND "${flags}")
  file(WRITE ${WORK_DIR}/split.cpp
       "#include <iostream>\n#include \"qorvex/scanner/statements.h\"\n"
       "int main() { std::cout << qorvex::SplitStatements(\"select 1; select 2\").size(); }\n")
  run(${CXX} ${WORK_DIR}/split.cpp -o ${WORK_DIR}/split ${flags} -Wl,-rpath,${pcdir}/..)
  run(${WORK_DIR}/split)
  expect("${out}" "^2$" "program built through pkg-config")
endif()
