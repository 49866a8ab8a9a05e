#pragma once

#include <cstddef>
#include <string>

namespace ostrel {

/// The JSON of one article record with about `bytes` bytes of text, varied by `index`.
std::string sampleRecord(std::size_t index, std::size_t bytes);
/// A result answer with `count` articles; `bytes` of text each (0: varied from some words to a long paragraph).
std::string samplePage(std::size_t count, std::size_t bytes);

}  // namespace ostrel
