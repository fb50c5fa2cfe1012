// Any bytes as a configuration file: read by the host's text stream, parsed as a command. What the
// words would write goes to a file system in memory.
#include "fuzz/memory_file.h"
#include "platform/error.h"
#include "platform/host/locale_text.h"
#include "platform/host/text_stream.h"
#include "unit/cli/parser_bench.h"

namespace {

/// Reads the host's file of any name; writes in memory.
class HostTexts : public test_support::FakeFileSystem {
  public:
    explicit HostTexts(std::string path) : path_(std::move(path)) {}
    std::shared_ptr<platform::TextStream> OpenTextFile(const std::string& path,
                                                       platform::OpenMode mode,
                                                       bool create) override {
        if (mode == platform::OpenMode::Writing)
            return FakeFileSystem::OpenTextFile(path, mode, create);
        return platform::host::OpenText(path_, mode, create, encoding_);
    }

  private:
    std::string path_;
    platform::host::LocaleText encoding_{"ISO-8859-1"};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    cli_tests::ParserBench bench;
    bench.state.g_objFSO = std::make_shared<HostTexts>(fuzz::MemoryFile("any.weu", {data, size}));
    try {
        bench.Run("-config any.weu");
    } catch (const platform::Error&) {
        // refused
    }
    return 0;
}
