#pragma once

#include <cassert>
#include <string>
#include <utility>
#include <variant>

namespace tallowen {

// The error side of a Result, wrapped so that a Result<std::string> can tell
// a value from a failure.
template <typename Error>
struct Failure {
    Error error;
};

template <typename Error>
Failure<Error> failure(Error error) {
    return Failure<Error>{std::move(error)};
}
inline Failure<std::string> failure(const char* error) { return Failure<std::string>{error}; }

// What a call that may fail gives back: its value, or why it failed, never
// both. Every call a shell makes reports failure this way; exceptions stay
// inside the store.
template <typename Value, typename Error = std::string>
class Result {
public:
    Result(Value value) : content_(std::in_place_index<0>, std::move(value)) {}
    Result(Failure<Error> failed) : content_(std::in_place_index<1>, std::move(failed.error)) {}

    bool ok() const { return content_.index() == 0; }
    explicit operator bool() const { return ok(); }

    Value& operator*() {
        assert(ok());
        return std::get<0>(content_);
    }
    const Value& operator*() const {
        assert(ok());
        return std::get<0>(content_);
    }
    Value* operator->() { return &**this; }
    const Value* operator->() const { return &**this; }

    const Error& error() const {
        assert(!ok());
        return std::get<1>(content_);
    }

private:
    std::variant<Value, Error> content_;
};

}  // namespace tallowen
