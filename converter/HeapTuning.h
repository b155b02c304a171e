#pragma once

/// What touching memory for the first time costs: more than what is then done with it.
namespace heap {

/// Makes malloc keep the memory that a file or a configuration gives back for the next one.
void keepFreedMemory();

/// Prepares malloc for many blocks of some 10 KB: what it hands out next lies in a huge page, where
/// the system has them. Only the first call does anything.
void useHugePage();

}  // namespace heap
