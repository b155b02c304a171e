#pragma once

/// What threads share, of the machine and of the process.
namespace threads {

/// True when two threads of the process can run at the same time, and what another one takes is not
/// missing elsewhere: its stack and its part of the heap are 72 MB of address space.
bool canRunTogether();

/// Gives the calling thread descriptors of its own, with those from `first` to `last` open and no
/// others: as long as a table is shared, the system guards every use of a descriptor. It may
/// refuse, and then nothing changes. The thread sees none of the descriptors opened elsewhere
/// later, nor others those that it opens.
void ownDescriptors(int first, int last);

}  // namespace threads
