#pragma once

#include "store/SampleStore.hpp"
#include "store/SqliteSampleStore.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>
#include <string>

namespace tallowen::testing {

// How one SampleStore implementation opens the SQLite store kept at a path,
// for reading and writing or for reading only; an implementation joins the
// conformance suite with INSTANTIATE_TEST_SUITE_P.
using StoreAccess = SqliteSampleStore::Access;
struct SampleStoreFactory {
    std::string name;
    std::function<std::unique_ptr<SampleStore>(const std::filesystem::path&, StoreAccess)> open;
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
    std::unique_ptr<SampleStore> open(StoreAccess access = StoreAccess::readWrite) const {
        return GetParam().open(storePath(), access);
    }

    TempDir dir_;
};

}  // namespace tallowen::testing
