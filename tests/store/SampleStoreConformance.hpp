#pragma once

#include "store/SampleStore.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>
#include <string>

namespace tallowen::testing {

// How one SampleStore implementation opens the store kept at a path, refusing
// every change when asked to; an implementation joins the conformance suite
// with INSTANTIATE_TEST_SUITE_P.
struct SampleStoreFactory {
    std::string name;
    std::function<std::unique_ptr<SampleStore>(const std::filesystem::path&, bool readOnly)> open;
};

inline void PrintTo(const SampleStoreFactory& factory, std::ostream* out) { *out << factory.name; }

// The text of the StoreError an operation throws.
inline std::string storeFailure(const std::function<void()>& operation) {
    try {
        operation();
    } catch (const StoreError& error) {
        return error.what();
    }
    return "no error";
}

class SampleStoreConformance : public ::testing::TestWithParam<SampleStoreFactory> {
protected:
    std::filesystem::path storePath() const { return dir_.path() / "store.sqlite"; }
    std::unique_ptr<SampleStore> open(bool readOnly = false) const { return GetParam().open(storePath(), readOnly); }

    TempDir dir_;
};

}  // namespace tallowen::testing
