# Writes what PROGRAM prints with --completion to OUTPUT.
execute_process(COMMAND "${PROGRAM}" --completion OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
file(WRITE "${OUTPUT}" "${text}")
