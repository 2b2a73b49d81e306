#pragma once

// What a definition file must hold where, derived from its text alone: the tags that are read under
// a known name, and the error of a file that ends too early.

#include <cstddef>
#include <string>
#include <vector>

namespace Testing {

struct DefinitionTag {
  std::size_t place = 0;  // of its '<'
  std::size_t end = 0;    // after its '>'
  std::string name;
  bool isEnd = false;

  std::size_t NamePlace() const { return place + (isEnd ? 2 : 1); }
};

/// The tags of a definition that are read under a known name, the root's end last. Left out are
/// those that are read first and looked at then: declarations, comments, the root's start, the
/// start of the outer Seed, the end of a list, where a further entry might stand.
inline std::vector<DefinitionTag> NamedTags(const std::string& text) {
  std::vector<DefinitionTag> tags;
  std::string root;
  for (std::size_t place = text.find('<'); place != std::string::npos;
       place = text.find('<', place + 1)) {
    DefinitionTag tag;
    tag.place = place;
    tag.end = text.find('>', place) + 1;
    tag.isEnd = text[place + 1] == '/';
    tag.name = text.substr(tag.NamePlace(), tag.end - 1 - tag.NamePlace());
    const bool isElement = tag.name.find_first_of(" !?") == std::string::npos &&
                           (!tag.isEnd || tag.name != "Simulations");
    if (isElement && root.empty()) {
      root = tag.name;
    } else if (isElement) {
      tags.push_back(tag);
    }
  }
  return tags;
}

/// The line that a valid definition gives when it is cut after its first `length` bytes. A tag
/// that is cut at or within its name gives the line for the name, with the bytes that were there;
/// a cut everywhere else gives the end of the stream.
inline std::string ErrorOfCut(const std::string& text, std::size_t length,
                              const std::string& file) {
  for (const DefinitionTag& tag : NamedTags(text)) {
    const std::size_t name = tag.NamePlace();
    if (length >= name && length < name + tag.name.size()) {
      return "Invalid input in file \"" + file + "\": expected \"" + tag.name + "\", current \"" +
             text.substr(name, length - name) + "\"";
    }
  }
  return "Unexpected end of stream";
}

/// True when the cut leaves a part of the flag: no flag, and its element has no end.
inline bool IsCutInFlag(const std::string& text, std::size_t length) {
  const std::string tag = "<UseGeneralizedEstimatingEquations>";
  const std::size_t place = text.find(tag);
  return place != std::string::npos && length > place + tag.size() &&
         length < text.find('<', place + 1);
}

}  // namespace Testing
