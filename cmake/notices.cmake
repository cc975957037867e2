# What an application that takes the library has to give notice of: the licence texts of all that is
# linked in, in ALGORITHM_NOTICES as NAME=FILE, for the packaging script. Each is looked for where package
# managers put it; ALGORITHM_LICENCE_NAME says another place.
set(licence_names copyright LICENSE LICENSE.md LICENSE.txt LICENSE.TXT COPYING)
set(ALGORITHM_NOTICES "")

# algorithm_notice(NAME FOLDER...): the text of what NAME is called in package managers, in one of them.
macro(algorithm_notice name)
  string(MAKE_C_IDENTIFIER ${name} variable)
  string(TOUPPER ALGORITHM_LICENCE_${variable} variable)
  find_file(${variable} NAMES ${licence_names} PATHS ${ARGN} NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH
    DOC "licence text of ${name}")
  list(APPEND ALGORITHM_NOTICES "${name}=${${variable}}")
endmacro()

foreach(library "libjpeg-turbo|${JPEG_INCLUDE_DIR}" "libpng|${PNG_PNG_INCLUDE_DIR}"
                "zlib|${ZLIB_INCLUDE_DIR}" "highway|${ALGORITHM_HIGHWAY_INCLUDE_DIR}")
  string(REGEX MATCH "^([^|]*)[|]([^;]*)" library "${library}")
  set(library_share ${CMAKE_MATCH_2}/../share)
  algorithm_notice(${CMAKE_MATCH_1} ${library_share}/${CMAKE_MATCH_1} ${library_share}/doc/${CMAKE_MATCH_1})
endforeach()

# The NDK has the texts of its parts in one file; the narrower one first.
set(licence_names NOTICE NOTICE.toolchain)
algorithm_notice(cxx-runtime ${ANDROID_TOOLCHAIN_ROOT} ${ANDROID_NDK})
set(ALGORITHM_NOTICES "${ALGORITHM_NOTICES}" CACHE INTERNAL "licence texts of what is linked in")
