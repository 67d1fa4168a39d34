#pragma once
// A small tmpfs mounted on a fresh folder for one test: a read-only folder
// that even root cannot write into, or a nearly full disk. Mounting needs
// privileges; where they are missing, `mounted()` is false and the test
// skips the case.

#include <filesystem>
#include <string>

#include "support/command_runner.h"

namespace tunebox::test {

class SmallMount {
  public:
    // `options` as for mount -o, e.g. "ro,size=1m".
    SmallMount(const std::filesystem::path& folder, const std::string& options) : folder_(folder) {
        std::filesystem::create_directories(folder_);
        mounted_ = run("mount -t tmpfs -o " + options + " tunebox-test '" + folder_.string() +
                       "' 2>/dev/null") == 0;
    }
    ~SmallMount() {
        if (mounted_) {
            run("umount '" + folder_.string() + "'");
        }
    }
    SmallMount(const SmallMount&) = delete;
    SmallMount& operator=(const SmallMount&) = delete;

    bool mounted() const { return mounted_; }

  private:
    std::filesystem::path folder_;
    bool mounted_ = false;
};

}  // namespace tunebox::test
