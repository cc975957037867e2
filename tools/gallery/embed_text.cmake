# Turns a text file into a C++ source that defines it as one string_view:
#   cmake -DINPUT=page.html -DOUTPUT=page.cpp -DHEADER=page.h -DNAME=kPage -P embed_text.cmake
file(READ "${INPUT}" text)
file(WRITE "${OUTPUT}"
"#include \"${HEADER}\"
const std::string_view alg::tool::${NAME} = R\"embedded(${text})embedded\";
")
