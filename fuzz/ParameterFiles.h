#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "converter/Converter.h"
#include "converter/Output.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/MemoryFile.h"

/// Up to three files in memory, each ended by a byte 0xFF, which no UTF-8 has.
class ParameterFiles {
  public:
    /// Their paths, good until the next call.
    std::vector<const char*> put(const std::uint8_t* data, std::size_t size) {
        std::string_view text = FuzzInput(data, size).rest();
        std::vector<const char*> paths;
        for (MemoryFile& file : files_) {
            const std::size_t end = text.find('\xFF');
            file.put(text.substr(0, end));
            paths.push_back(file.path().c_str());
            if (end == std::string_view::npos) {
                break;
            }
            text.remove_prefix(end + 1);
        }
        return paths;
    }

  private:
    MemoryFile files_[3];
};

/// One run of the converter.
struct Run {
    static constexpr int aborted = 134;  ///< a root element whose name is too short

    int status = 0;
    std::string record;
    std::string messages;

    explicit Run(const std::vector<const char*>& paths) {
        static MemoryFile recordFile;
        static MemoryFile messageFile;
        recordFile.put("");
        messageFile.put("");
        Output output(recordFile.descriptor(), messageFile.descriptor());
        Messages lines(output, std::string(paths.front()).size());
        try {
            status = Converter(output, lines).run(paths);
            output.flush();
        } catch (const std::out_of_range& error) {
            status = aborted;
            // As the library says it when nobody catches it.
            messageFile.put(messageFile.bytes() +
                            "terminate called after throwing an instance of 'std::out_of_range'\n"
                            "  what():  " +
                            error.what() + "\n");
        }
        record = recordFile.bytes();
        messages = messageFile.bytes();
    }
};
