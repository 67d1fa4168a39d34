#include "app/cli/source_settings.h"

#include "platform/settings.h"

namespace tunebox::cli {

SourceOptions sourceOptionsFromSettings() {
    return SourceOptions{readDecoderChoice() == 1};
}

}  // namespace tunebox::cli
