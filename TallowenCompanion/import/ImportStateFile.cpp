#include "import/ImportStateFile.hpp"

#include "import/ImportStateCodec.hpp"
#include "base/Files.hpp"

namespace tallowen {

ImportStateFile::ImportStateFile(std::filesystem::path supportFolder) : supportFolder_(std::move(supportFolder)) {}

std::filesystem::path ImportStateFile::location() const {
    std::error_code ignored;
    std::filesystem::create_directories(supportFolder_, ignored);
    return supportFolder_ / "import-state.json";
}

ImportState ImportStateFile::load() const {
    const auto text = readWholeFile(location());
    if (!text) return ImportState{};
    return decodeImportState(*text).value_or(ImportState{});
}

bool ImportStateFile::save(const ImportState& state) const {
    return writeFileAtomically(location(), encodeImportState(state));
}

}  // namespace tallowen
