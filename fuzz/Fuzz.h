// The fuzzing targets: one for each kind of input that reaches the driver or the console from
// outside, chosen by --target=NAME. An input is text first, pieces ended by a backslash and any
// other character, so that seeds can be written by hand; numbers are taken from its end.
#ifndef HXD_FUZZ_FUZZ_H
#define HXD_FUZZ_FUZZ_H

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>
#include <string>

using Input = FuzzedDataProvider;

// A fault that no sanitizer sees.
#define FUZZ_EXPECT(condition) \
    do {                       \
        if (!(condition))      \
            std::abort();      \
    } while (false)

namespace fuzz {

// Text alone.
void Archive(Input& input);
void Text(Input& input);
void ProcFiles(Input& input);
void Expectations(Input& input);
void CommandLine(Input& input);
void PanelDescription(Input& input);

// Through a device that lives as long as the program.
void Commands(Input& input);
void Writes(Input& input);
void Logs(Input& input);
void Host(Input& input);
void Time(Input& input);
void SystemFiles(Input& input);
void Scripts(Input& input);
void Requests(Input& input);

// Through files and sockets.
void Settings(Input& input);
void TimeAnswers(Input& input);

}  // namespace fuzz

#endif
