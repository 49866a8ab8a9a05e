#pragma once

#include <cstddef>
#include <string>

namespace ostrel {

/// The JSON of one article record with about `bytes` bytes of text; `index` varies the text.
std::string sampleRecord(std::size_t index, std::size_t bytes);
/// The JSON of an answer with `count` articles of `bytes` bytes of text each; 0: from some words to a long paragraph.
std::string samplePage(std::size_t count, std::size_t bytes);

}  // namespace ostrel
