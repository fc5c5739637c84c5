// A value or an error.
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace stage {

/// An error message. Names the file, line or object and says what would be right. One or more lines, without a newline
/// at the end.
struct Error {
    std::string message;
};

/// A value or an error; true as bool when it is a value. Test it before use.
template <class T>
class Result {
  public:
    Result(T value) : value_(std::move(value)) {}
    Result(Error error) : error_(std::move(error)) {}

    explicit operator bool() const { return value_.has_value(); }
    T& operator*() { return *value_; }
    const T& operator*() const { return *value_; }
    T* operator->() { return &*value_; }
    const T* operator->() const { return &*value_; }
    const Error& error() const { return error_; }

  private:
    std::optional<T> value_;
    Error error_;
};

/// The value type of operations that only succeed or fail.
struct Done {};

}  // namespace stage
