#pragma once
// Sets or clears an environment variable for one test and puts it back.

#include <cstdlib>
#include <optional>
#include <string>

namespace tunebox::test {

class ScopedEnvironment {
  public:
    ScopedEnvironment(const char* name, const char* value) : name_(name) {
        if (const char* old = std::getenv(name)) {
            previous_ = old;
        }
        set(value);
    }
    ~ScopedEnvironment() { set(previous_ ? previous_->c_str() : nullptr); }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

  private:
    void set(const char* value) {
        if (value == nullptr) {
            ::unsetenv(name_);
        } else {
            ::setenv(name_, value, 1);
        }
    }
    const char* name_;
    std::optional<std::string> previous_;
};

}  // namespace tunebox::test
