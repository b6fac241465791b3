# Writes vornctl's manual page, OUT and OUT.gz (cmake -P, with VORNCTL, HELP2MAN, VERSION and
# OUT set): help2man over the tool's --help and --version, and a COMMANDS
# section made of every command's own --help-all, so the page says what the
# tool says and cannot drift from it.
execute_process(COMMAND ${VORNCTL} --help OUTPUT_VARIABLE top COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE ".*\nSubcommands:\n" "" listing "${top}")
string(REGEX MATCHALL "(^|\n)  [a-z][a-z0-9-]*" names "${listing}")

set(section "[COMMANDS]\n")
foreach(name IN LISTS names)
  string(STRIP "${name}" name)
  execute_process(COMMAND ${VORNCTL} ${name} --help-all OUTPUT_VARIABLE help
                  COMMAND_ERROR_IS_FATAL ANY)
  # Verbatim text: a backslash is roff's escape, a leading dot its request.
  string(REPLACE "\\" "\\e" help "${help}")
  string(REGEX REPLACE "(^|\n)([.'])" "\\1\\\\&\\2" help "${help}")
  string(APPEND section ".SS ${name}\n.nf\n${help}.fi\n")
endforeach()
file(WRITE ${OUT}.include "${section}")

execute_process(COMMAND ${HELP2MAN} --no-info --section 1 --source "Vorn ${VERSION}"
                        --name "the Vorn hardware-support library's jobs by hand"
                        --include ${OUT}.include --output ${OUT} ${VORNCTL}
                COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE ${OUT}.include)
# The installed page is compressed, as man pages on Debian are.
execute_process(COMMAND gzip -9 -n -c ${OUT} OUTPUT_FILE ${OUT}.gz COMMAND_ERROR_IS_FATAL ANY)
