// Running programs from a test, and what is asked of the files that they make.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace test_support {

struct CommandResult {
    int status = -1;  // exit status; 128 + signal when killed by one
    std::string out;
    std::string err;
};

/// Runs a program found on the path with its standard input empty, and waits for it.
/// `environment` is added to this process's.
CommandResult RunCommand(const std::vector<std::string>& words,
                         const std::map<std::string, std::string>& environment = {});

/// A program that runs while the test goes on.
class BackgroundCommand {
  public:
    /// Its output goes to files; `folder` holds them.
    BackgroundCommand(const std::vector<std::string>& words, const std::filesystem::path& folder);
    /// Kills what still runs.
    ~BackgroundCommand();
    BackgroundCommand(const BackgroundCommand&) = delete;
    BackgroundCommand& operator=(const BackgroundCommand&) = delete;

    void Signal(int number) const;
    /// Waits for the end; the status as in CommandResult.
    CommandResult Wait();

  private:
    std::filesystem::path folder_;
    int process_ = -1;
};

/// A new folder that goes with all that is in it when the object goes.
class TempFolder {
  public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::string operator/(const std::string& name) const { return (path_ / name).string(); }

  private:
    std::filesystem::path path_;
};

/// Waits for what another program does: asks again and again, for half a minute at most.
bool Eventually(const std::function<bool()>& happened);

/// "" where there is no file.
std::string FileText(const std::filesystem::path& path);

/// Runs "ffmpeg ARGUMENTS 'OUT'" in a shell and returns OUT; a failure is a failure of the test.
std::string Ffmpeg(const std::string& arguments, const std::string& out);

/// What an independent decoder has to say about a file: "" for a sound one.
std::string DecodeMessages(const std::string& file);

/// The entries that ffprobe gives for a stream ("v:0", "a:0") or with "" for the container:
/// "width", "duration", "codec_name", "nb_read_packets" (packets are counted), "tag:title" ...
std::map<std::string, std::string> Probe(const std::string& file, const std::string& stream);

/// One value of Probe as a number; NaN when it is missing.
double ProbeNumber(const std::string& file, const std::string& stream, const std::string& key);

/// Bytes of all packets of a stream.
double ProbeBytes(const std::string& file, const std::string& stream);

}  // namespace test_support
