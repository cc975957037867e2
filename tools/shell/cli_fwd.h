// The parser's classes, for headers that only name them: its own header takes a compiler seconds.
#pragma once

namespace CLI {
class App;
class Option;
}  // namespace CLI
