# cmake -DSYMBOL=NAME -DINPUT=FILE.ttf -DOUTPUT=FILE.cpp [-DFROM=TEXT] -P embed_font.cmake
#
# Writes FILE.cpp with the font's bytes as `const unsigned char NAME[]` and their count
# as `const unsigned int NAME_SIZE`, 24 bytes a line. The output depends on the input
# alone, so a rebuild gives the same file. Any other file embeds the same way; FROM then
# says where it came from in the generated file's first line.
file(READ "${INPUT}" _hex HEX)
file(SIZE "${INPUT}" _size)
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," _bytes "${_hex}")
string(REPEAT "0x..," 24 _line)
string(REGEX REPLACE "(${_line})" "\\1\n" _bytes "${_bytes}")
get_filename_component(_name "${INPUT}" NAME)
if(NOT DEFINED FROM)
    set(FROM "resources/fonts/${_name}")
endif()
file(WRITE "${OUTPUT}"
"// Generated from ${FROM} by embed_font.cmake: do not edit.
extern const unsigned char ${SYMBOL}[];
extern const unsigned int ${SYMBOL}_SIZE;
alignas(8) const unsigned char ${SYMBOL}[] = {
${_bytes}
};
const unsigned int ${SYMBOL}_SIZE = ${_size};
")
