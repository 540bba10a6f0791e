#include "conversion/Converter.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <unistd.h>

namespace {

class Silence : public tnconvert::Report {
public:
    void progress(double, const std::string &) override { }
    void warning(const std::string &) override { }
    void partStarted(const std::string &) override { }
    void partFinished(const std::string &, const tnconvert::Outcome &) override { }
};

/// A directory in memory, where there is one; removed at the end.
struct Directory {
    std::filesystem::path path =
        (std::filesystem::exists("/dev/shm") ? "/dev/shm/tnfuzz" : "tnfuzz")
        + std::to_string(getpid());

    Directory() { std::filesystem::create_directory(path); }
    ~Directory() { std::filesystem::remove_all(path); }
};

} // namespace

/// Converts the bytes as a file self.obj, whatever its format, so that an Obj file can refer to
/// itself and hold its own materials.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const Directory directory;
    tnconvert::Job job;
    job.input = directory.path / "self.obj";
    job.output = directory.path / "output.glb";
    job.type = TN_FORMAT;
    job.settings.importCurves = true;
    job.settings.importMetadata = true;
    std::ofstream(job.input, std::ios::binary)
        .write(reinterpret_cast<const char *>(data), std::streamsize(size));
    Silence silence;
    const tnconvert::Outcome outcome = tnconvert::convert(job, silence);
    // The sentence for exceptions that nobody foresaw.
    if (outcome.message.find(" cannot be converted: ") != std::string::npos) {
        std::fprintf(stderr, "%s\n", outcome.message.c_str());
        std::abort();
    }
    return 0;
}
