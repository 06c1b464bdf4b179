# cmake -DOUTPUT=FILE -DINPUT=FILE -DHEADER=FILE -DFUNCTION=NAME -P this
# Makes a C++ source of a text, so that nothing has to be found at run time. A
# literal is cut into pieces: compilers need not take long ones.
file(READ "${INPUT}" text)
string(REPLACE "\n" "\n)text\"\nR\"text(" text "${text}")
file(WRITE "${OUTPUT}" "#include \"${HEADER}\"\n\nnamespace Tool\n{\n
std::string_view ${FUNCTION}()\n{\n    return\nR\"text(${text})text\";\n}\n
} // namespace Tool\n")
