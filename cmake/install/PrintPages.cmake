# Writes the manual pages and completion scripts that PROGRAM prints into FOLDER.

function(print file)
  execute_process(COMMAND ${PROGRAM} ${ARGN} OUTPUT_FILE ${FOLDER}/${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE ${FOLDER})
file(MAKE_DIRECTORY ${FOLDER}/man1)
print(man1/emeg.1 man)
# The program's own page names those of its commands.
file(STRINGS ${FOLDER}/man1/emeg.1 lines REGEX "emeg\\\\-[a-z-]+ \\(1\\)")
foreach(line IN LISTS lines)
  string(REGEX REPLACE ".*emeg\\\\-([a-z-]+) \\(1\\).*" "\\1" command "${line}")
  print(man1/emeg-${command}.1 man ${command})
endforeach()
print(emeg.bash completion bash)
print(_emeg completion zsh)
print(emeg.fish completion fish)
file(TOUCH ${FOLDER}/made)
