// Memory that runs out: one allocation is refused. Not with the sanitizers, which have an allocator
// of their own.
#ifndef HXD_TESTS_FAULTYMEMORY_H
#define HXD_TESTS_FAULTYMEMORY_H

namespace faulty_memory {

void Refuse(int number);        // the calling thread's number-th from now on, 1 for the next
void RefuseOthers(int number);  // that of all other threads together
bool Stop();                    // true when it has come to that

// From now on a process that ends, or waits for ever, in one of the functions of Qt's that are
// known for it exits with this code; between two of the calls above there are 10 seconds, or a
// quarter of one in such a function.
constexpr int QTS_END = 77;
void TellQtsEnds();

}  // namespace faulty_memory

#endif
