// Memory that runs out: one allocation of the calling thread is refused. Not with the sanitizers,
// which have an allocator of their own.
#ifndef HXD_TESTS_FAULTYMEMORY_H
#define HXD_TESTS_FAULTYMEMORY_H

namespace faulty_memory {

// Until the next of these calls there are 10 seconds, or a quarter of one in a function of Qt's.
void Refuse(int number);  // the number-th from now on, 1 for the next
bool Stop();              // true when it has come to that

// From now on a process that ends, or waits for ever, in one of Qt's own functions exits with this
// code.
constexpr int QTS_END = 77;
void TellQtsEnds();

}  // namespace faulty_memory

#endif
