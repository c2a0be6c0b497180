// The machine below the driver as fuzzing has it: no process is started, nothing is flushed to a
// disk, and who waits for something waits a short time.
#ifndef HXD_FUZZ_MACHINE_H
#define HXD_FUZZ_MACHINE_H

#include <atomic>
#include <string>

namespace machine {

extern std::atomic<bool> driven;        // from the first input on
extern std::string kernelLog;           // what dmesg prints
extern std::atomic<bool> commandsFail;  // every shell command; what is piped finds no process
extern std::atomic<bool> pingAnswers;
extern std::atomic<int> clockStepSeconds;  // how far the system clock is off

}  // namespace machine

#endif
