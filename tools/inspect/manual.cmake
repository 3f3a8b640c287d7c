# cmake -DTOOL=FILE -DMANUAL=FILE -P manual.cmake: a page for man, of what the tool's --help says.
execute_process(COMMAND ${TOOL} --help OUTPUT_VARIABLE help COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "\\" "\\e" help "${help}")
string(REPLACE "-" "\\-" help "${help}")
string(REGEX REPLACE "\n([.'])" "\n\\\\&\\1" help "${help}")
file(WRITE ${MANUAL} ".TH MODELCACHE\\-INSPECT 1\n.SH NAME
modelcache\\-inspect \\- shows what lies in model caches\n.SH DESCRIPTION\n.nf\n${help}.fi\n")
