#pragma once

#include "store/SampleStore.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace tallowen::testing {

// How one SampleStore implementation opens the store kept at a path, refusing
// every change when asked to; an implementation joins the conformance suite
// with INSTANTIATE_TEST_SUITE_P.
using SampleStoreFactory = std::function<std::unique_ptr<SampleStore>(const std::filesystem::path&, bool readOnly)>;

class SampleStoreConformance : public ::testing::TestWithParam<SampleStoreFactory> {
protected:
    std::filesystem::path storePath() const { return dir_.path() / "store.sqlite"; }
    std::unique_ptr<SampleStore> open(bool readOnly = false) const { return GetParam()(storePath(), readOnly); }

    TempDir dir_;
};

}  // namespace tallowen::testing
