#pragma once

// For headers that only pass the class on: that of the command line library takes longer to compile
// than most files that would get it by them.
namespace CLI {
class App;
}  // namespace CLI
