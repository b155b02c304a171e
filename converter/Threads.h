#pragma once

/// What threads share, of the machine and of the process.
namespace threads {

/// True when there is room for another thread: a processor, and address space without a limit. Its
/// stack and its part of the heap take 72 MB of that, which would be missing elsewhere.
bool haveRoom();

/// Gives the calling thread descriptors of its own, with those from `first` to `last` open and no
/// others: as long as a table is shared, the system guards every use of a descriptor. The thread
/// sees none of the descriptors opened elsewhere later, nor others those that it opens. False when
/// the system refuses, and then nothing changes.
bool ownDescriptors(int first, int last);

}  // namespace threads
