# cmake -DOUTPUT=FILE -DPROFILES=A.json;B.json -P embed.cmake
# Makes a C++ source of the profiles, so that nothing has to be found at run
# time. A literal is cut into pieces: compilers need not take long ones.
set(source "#include \"sim/profile/builtin.h\"\n\nnamespace Sim\n{\n
const std::vector<BuiltinProfile>& builtinProfiles()\n{
    static const std::vector<BuiltinProfile> profiles{\n")
foreach(profile IN LISTS PROFILES)
  get_filename_component(name "${profile}" NAME_WE)
  file(READ "${profile}" text)
  string(REPLACE "\n" "\n)json\"\nR\"json(" text "${text}")
  string(APPEND source "{\"${name}\",\nR\"json(${text})json\"},\n")
endforeach()
string(APPEND source "    };\n    return profiles;\n}\n\n} // namespace Sim\n")
file(WRITE "${OUTPUT}" "${source}")
