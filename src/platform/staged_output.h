#pragma once
// An output file written in full before it takes the place of anything: the
// data goes to a temporary file beside the target, which is stored to disk
// and renamed over the target only when the writer says it is complete. A
// failed or abandoned write removes the temporary and leaves whatever the
// target held untouched.
//
// "-" names standard output. Standard output, a pipe or a device cannot be
// renamed over, so for them the temporary lives in the temporary directory
// and its bytes are copied out on success (a WAV header is only complete
// once the data is written, so nothing can be streamed before).

#include <memory>
#include <string>

namespace tunebox {

class StagedOutput {
  public:
    // The staging file for `target`, or null with `error` saying why.
    static std::unique_ptr<StagedOutput> create(const std::string& target, std::string& error);

    ~StagedOutput();
    StagedOutput(const StagedOutput&) = delete;
    StagedOutput& operator=(const StagedOutput&) = delete;

    // Where the writer writes; it may reopen and truncate the file.
    const std::string& stagingPath() const { return staging_; }

    // Stores the staged file and puts it in place of the target. Returns
    // true, or false with `error` saying why (the target is then untouched
    // unless the copy to a stream broke off).
    bool commit(std::string& error);

  private:
    enum class Delivery { rename, copy };
    StagedOutput(std::string target, std::string staging, Delivery delivery);

    bool renameIntoPlace(std::string& error);
    bool copyOut(std::string& error);

    std::string target_;
    std::string staging_;
    Delivery delivery_;
    bool committed_ = false;
};

}  // namespace tunebox
