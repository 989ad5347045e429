# Writes what PROGRAM prints with --completion for each shell into FOLDER, under the name that the shell looks for.
foreach(pair IN ITEMS bash:screenmanager zsh:_screenmanager fish:screenmanager.fish)
  string(REPLACE ":" ";" pair "${pair}")
  list(GET pair 0 shell)
  list(GET pair 1 name)
  execute_process(COMMAND "${PROGRAM}" --completion ${shell} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
  file(WRITE "${FOLDER}/${name}" "${text}")
endforeach()
