#include "platform/foundation/values/Value.h"

#include <cstdlib>

namespace {

void readEverything(const ostrel::Value& value) {
    value.text();
    value.integer();
    value.number();
    value.boolean();
    for (const ostrel::Value& element : value.elements()) readEverything(element);
    for (const std::string_view key : value.keys()) readEverything(value[key]);
}

}  // namespace

/// Every value of JSON that parses can be read, and the JSON that it writes parses to an equal value.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    std::string error;
    const auto value = ostrel::Value::parse({reinterpret_cast<const char*>(data), size}, &error);
    if (value.isAbsent()) {
        if (error.empty()) std::abort();
        return 0;
    }
    readEverything(value);
    if (!(ostrel::Value::parse(value.json()) == value)) std::abort();
    return 0;
}
