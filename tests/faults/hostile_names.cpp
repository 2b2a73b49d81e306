#include "faults/hostile_names.h"

namespace Testing {
namespace {

constexpr int kLastByte = 255;
constexpr std::size_t kLongestName = 255;

/// True for a byte that a name may hold; the program takes both slashes as separators.
bool IsByteOfNames(int byte) { return byte > 0 && byte != '/' && byte != '\\'; }

std::string AllBytes() {
  std::string name;
  for (int byte = 1; byte <= kLastByte; ++byte) {
    if (IsByteOfNames(byte) && byte != '<') {
      name += static_cast<char>(byte);
    }
  }
  return name;
}

}  // namespace

std::vector<HostileName> HostileNames() {
  return {
      {"line feed", std::string("a\n") + kForgedLine + ".csv"},
      {"line feed at the end", "a.csv\n"},
      {"carriage return", "a.csv\rhovar: done"},
      {"carriage return and line feed", std::string("a\r\n") + kForgedLine + ".csv"},
      {"escape sequences", "\x1b[2J\x1b]0;title\x07.csv"},
      {"C1 characters", "a\xc2\x9b\xc2\x85.csv"},
      {"C1 bytes", "a\x9b\x85.csv"},
      {"apostrophe", "it's.csv"},
      {"quotes", "\"a\"b'c'\".csv"},
      {"what a shell expands", "$HOME `id` $(id) *;&|>(){}[]!~#.csv"},
      {"per cent", "%s%n%d.csv"},
      {"ampersand", "a&amp;b&lt;.csv"},
      {"comma", "a,b;c.csv"},
      {"option", "-x"},
      {"long option", "--keep"},
      {"two hyphens", "--"},
      {"equals sign", "--json=x"},
      {"leading blank", " a.csv"},
      {"trailing blank", "a.csv "},
      {"blanks alone", "   "},
      {"tab", "\ta.csv\t"},
      {"leading dot", ".hidden.csv"},
      {"trailing dot", "a."},
      {"device of another system", "CON"},
      {"device with an ending", "nul.csv"},
      {"colon", "c:a.csv"},
      {"right to left", "\xd7\xa9\xd7\x9c\xd7\x95\xd7\x9d.csv"},
      {"turned letters", "a\xe2\x80\xaevsc.csv"},
      {"isolated letters", "a\xe2\x81\xa6\xe2\x80\x8f\xe2\x81\xa9.csv"},
      {"no UTF-8", "\xff\xfe\xc3.csv"},
      {"line separator",
       "a\xe2\x80\xa8"
       "b.csv"},
      {"ends like a temporary file", "d.xml.part"},
      {"longest name", std::string(kLongestName, 'n')},
      {"longest name with an ending", std::string(kLongestName - 4, 'n') + ".csv"},
      {"all bytes", AllBytes()},
  };
}

std::vector<HostileName> NamesOfSingleBytes() {
  std::vector<HostileName> names;
  for (int byte = 1; byte <= kLastByte; ++byte) {
    if (IsByteOfNames(byte)) {
      names.push_back(
          {"byte " + std::to_string(byte), std::string("a") + static_cast<char>(byte) + "b.csv"});
    }
  }
  return names;
}

bool IsTextOfAnElement(const std::string& name) { return name.find('<') == std::string::npos; }

}  // namespace Testing
