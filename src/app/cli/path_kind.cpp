#include "app/cli/path_kind.h"

#include <filesystem>

namespace tunebox::cli {

PathKind pathKindOf(const std::string& path) {
    std::error_code error;
    switch (std::filesystem::status(path, error).type()) {
        case std::filesystem::file_type::not_found:
            return PathKind::missing;
        case std::filesystem::file_type::directory:
            return PathKind::directory;
        default:
            return PathKind::other;
    }
}

}  // namespace tunebox::cli
