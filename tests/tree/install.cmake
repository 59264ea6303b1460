cmake_minimum_required(VERSION 3.25)
# Installs a build below a prefix of the test's own and uses what is there: programs find their files from their own
# place, units name the installed programs, nothing points back to the build.
# Usage: cmake -DBUILD_DIR=... -DCOMPONENTS=... -P install.cmake
set(root ${BUILD_DIR}/install-test)
set(prefix ${root}/prefix)
file(REMOVE_RECURSE ${root})

# run(what ... ): the output of a command; a failure ends the test.
function(run)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${ARGN}: ${status}\n${out}${err}")
  endif()
  set(out "${out}" PARENT_SCOPE)
endfunction()

function(expect text what)
  if(NOT out MATCHES "${text}")
    message(FATAL_ERROR "${what} lacks ${text}:\n${out}")
  endif()
endfunction()

foreach(component IN LISTS COMPONENTS)
  run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix} --component ${component})
endforeach()

set(ctl ${CMAKE_COMMAND} -E env --unset=TALLYBOOK_PASSWORD TALLYBOOK_MACHINE_STORE=${root}/machine.ini ${prefix}/bin/tallyctl)
run(${ctl} init ${root}/data --sample)
run(${ctl} folder list)
expect("100" "folder list")
# A second start of the service makes nothing again.
run(${ctl} init ${root}/data --if-missing)

run(${prefix}/bin/tallymon formats)
expect("asterisk" "tallymon formats")

foreach(unit tallybook.service tallybook-backup.service tallymon.service)
  file(READ ${prefix}/lib/systemd/system/${unit} out)
  expect("\nExecStart=${prefix}/bin/" ${unit})
endforeach()
foreach(page tallyctl.1 tallymon.1)
  if(NOT EXISTS ${prefix}/share/man/man1/${page})
    message(FATAL_ERROR "no ${page}")
  endif()
endforeach()
if(desktop IN_LIST COMPONENTS)
  run(${prefix}/bin/tallybook --version)
  expect("Qt " "tallybook --version")
  find_program(appstreamcli appstreamcli)
  if(appstreamcli)
    run(${appstreamcli} validate --no-net ${prefix}/share/metainfo/example.tallybook.Tallybook.metainfo.xml)
  endif()
endif()
file(REMOVE_RECURSE ${root})
