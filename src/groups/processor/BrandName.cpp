#include "groups/processor/BrandName.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <string_view>

namespace quenlor {
namespace {

constexpr std::string_view MARKS[] = {"(r)", "(tm)", "(c)"};

std::string lowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

std::string withoutMark(std::string text, std::string_view mark) {
  for (size_t at = lowerCase(text).find(mark); at != std::string::npos;
       at = lowerCase(text).find(mark)) {
    text.erase(at, mark.size());
    text.insert(at, 1, ' ');
  }
  return text;
}

}  // namespace

std::string plainBrandName(const std::string& brand) {
  std::string text = brand.substr(0, brand.find('@'));
  for (const std::string_view mark : MARKS) text = withoutMark(std::move(text), mark);
  std::istringstream words(text);
  std::string name;
  for (std::string word; words >> word;) {
    if (!name.empty()) name += ' ';
    name += word;
  }
  return name;
}

}  // namespace quenlor
