#pragma once
// A fresh directory for one test, removed afterwards; optionally the working
// directory for the test's duration (the log lives in the working directory).

#include <filesystem>
#include <random>
#include <string>

namespace tunebox::test {

class TempDir {
public:
    TempDir() {
        std::random_device random;
        path_ = std::filesystem::temp_directory_path() /
                ("tunebox-test-" + std::to_string(random()) + std::to_string(random()));
        std::filesystem::create_directories(path_);
    }
    ~TempDir() {
        if (!previous_.empty()) {
            std::filesystem::current_path(previous_);
        }
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    void enter() {
        previous_ = std::filesystem::current_path();
        std::filesystem::current_path(path_);
    }
    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
    std::filesystem::path previous_;
};

}  // namespace tunebox::test
