# SPDX-License-Identifier: Apache-2.0
# Writes the manual pages of PROGRAM, whose name is NAME, into DIRECTORY: NAME.1 and, for each noun, NAME-NOUN.1.
file(GLOB old ${DIRECTORY}/${NAME}-*.1)
list(FILTER old EXCLUDE REGEX "/qvs-(host|agent|fleet)[^/]*$")
file(REMOVE ${old} ${DIRECTORY}/${NAME}.1)
file(MAKE_DIRECTORY ${DIRECTORY})
execute_process(COMMAND ${PROGRAM} manual --names OUTPUT_VARIABLE nouns COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" nouns "${nouns}")
foreach(noun IN LISTS nouns)
    execute_process(COMMAND ${PROGRAM} manual ${noun}
        OUTPUT_FILE ${DIRECTORY}/${NAME}-${noun}.1 COMMAND_ERROR_IS_FATAL ANY)
endforeach()
execute_process(COMMAND ${PROGRAM} manual OUTPUT_FILE ${DIRECTORY}/${NAME}.1 COMMAND_ERROR_IS_FATAL ANY)
