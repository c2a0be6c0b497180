// The device of the targets that go through one, and its host.
#ifndef HXD_FUZZ_FUZZDEVICE_H
#define HXD_FUZZ_FUZZDEVICE_H

#include "FakeHost.h"
#include "FakeLink.h"
#include "driver/CDevCtrl.h"
#include "fuzz/Fuzz.h"

// Made once; each input finds the same variables and a platform that works, or, by a number of the
// input's, one of whose functions fails.
class FuzzDevice {
public:
    static FuzzDevice& Fresh(Input& input);

    static constexpr int MOST_STEPS = 2;  // of one input

    int Collect();
    void Run(const std::string& command);
    // Some commands, and a collection that has to answer as the last of them.
    void RunCommands(Input& input, int most = MOST_STEPS);

    FakeHost host;
    FakeLink link;
    CDevCtrl device{"fuzz", &host};
    int status = 0;        // of the last call
    bool mayBeOn = false;  // the time synchronisation

private:
    FuzzDevice();
};

#endif
