// What the reference says about each option beyond its name and the names of its values.
#pragma once

#include <span>
#include <string_view>

namespace reference {

/// Whether the example runs today.
enum class Today {
    Works,
    Refused,  // one line says that it is not possible yet; exit status 1
    Hardware  // it depends on the machine
};

struct OptionNote {
    std::string_view name;    // with its dash, as in the table of options
    std::string_view values;  // names of the values where the help has no entry; else empty
    std::string_view accepts;
    std::string_view fallback;
    std::string_view effect;
    std::string_view example;  // words behind the program's name, as a shell takes them
    Today today;
    std::string_view errors;
};

/// In no particular order. Examples read film.avi, talk.wav, job.weu and the folder holiday.
std::span<const OptionNote> OptionNotes();

/// Whether a number of -v_preproc is carried out with every codec.
bool FilterWorksToday(int number);

/// What the reference says about a number of -v_preproc beside the help's words.
std::string_view FilterNote(int number);

}  // namespace reference
