#pragma once

/// What the process may use of the machine.
namespace processors {

/// True when two threads of the process can run at the same time.
bool areSeveral();

}  // namespace processors
