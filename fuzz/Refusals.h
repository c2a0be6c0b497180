// Calls of the system that the machine refuses, to the driver and to Qt: one kind of them at a
// time.
#ifndef HXD_FUZZ_REFUSALS_H
#define HXD_FUZZ_REFUSALS_H

namespace machine {

// number: of a row in Refusals.cpp; any other refuses nothing any more. True when something is
// refused from now on.
bool Refuse(int number);
constexpr int NOTHING = -1;

}  // namespace machine

#endif
