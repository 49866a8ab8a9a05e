#pragma once

#include "platform/foundation/values/JsonDocument.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// One immutable value of a parsed JSON document (RFC 8259): a pointer to the shared document and an index
/// into it. A copy costs a reference count; the document lives as long as any of its values. Any thread may
/// read. A missing value is *absent*: every operation on it returns its empty result.
class Value {
public:
    enum class Type { absent, null, boolean, number, string, array, dictionary };

    Value() = default;

    /// Parses a whole document. On failure the value is absent and `error`, when given, gets an English
    /// sentence.
    static Value parse(std::string_view json, std::string* error = nullptr);
    /// A string value, made without parsing; for records and notification objects.
    static Value ofString(std::string_view text);

    Type type() const;
    bool isAbsent() const { return document_ == nullptr; }
    bool isNull() const { return type() == Type::null; }
    bool isString() const { return type() == Type::string; }
    bool isNumber() const { return type() == Type::number; }
    bool isArray() const { return type() == Type::array; }
    bool isDictionary() const { return type() == Type::dictionary; }

    /// The text of a string; empty for every other type. Valid while any value of the document lives.
    std::string_view string() const;
    /// A string as it is, a number as its shortest decimal text, a boolean as "1" or "0"; absent for other
    /// types.
    std::optional<std::string> text() const;
    /// A number truncated toward zero and clamped to 64 bits, a boolean, or the leading integer of a string;
    /// else 0.
    std::int64_t integer() const;
    /// A number, a boolean as 1 or 0, or the leading number of a string; otherwise 0.
    double number() const;
    /// True for `true` and for numbers other than 0 (also as text).
    bool boolean() const;

    /// Elements of an array or members of a dictionary; 0 for others.
    std::size_t count() const;
    /// The elements of an array in order; empty for other types. Takes one pass over the array.
    std::vector<Value> elements() const;
    /// The value of the first member with this key; absent without such a member and for other types.
    Value operator[](std::string_view key) const;
    /// The keys of a dictionary in document order.
    std::vector<std::string_view> keys() const;

    /// The compact JSON text of this value; empty when absent.
    std::string json() const;

    /// Deep equality of types and contents, regardless of the order of members. Two absent values are equal.
    friend bool operator==(const Value& a, const Value& b);

    /// The exact size of the shared document's parsed form in bytes, for measurements.
    std::size_t documentBytes() const;

private:
    Value(std::shared_ptr<const JsonDocument> document, std::size_t index)
        : document_(std::move(document)), index_(index) {}
    friend class JsonDocument;

    std::shared_ptr<const JsonDocument> document_;
    std::size_t index_ = 0;
};

/// The type of records: a value that is a dictionary or absent. Constructed from any other value it is
/// absent.
class Dictionary {
public:
    Dictionary() = default;
    explicit Dictionary(Value value) : value_(value.isDictionary() ? std::move(value) : Value()) {}
    /// Parses JSON text; absent when it is not one JSON object.
    static Dictionary parse(std::string_view json) { return Dictionary(Value::parse(json)); }

    explicit operator bool() const { return !value_.isAbsent(); }
    Value operator[](std::string_view key) const { return value_[key]; }
    const Value& value() const { return value_; }
    friend bool operator==(const Dictionary& a, const Dictionary& b) { return a.value_ == b.value_; }

private:
    Value value_;
};

}  // namespace ostrel
