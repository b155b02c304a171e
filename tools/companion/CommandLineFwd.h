#pragma once

// The names of the command line library's classes for headers that pass them on. Its own header
// takes longer to compile than most files that would get it by them.
namespace CLI {
class App;
class Option;
class Validator;
}  // namespace CLI
