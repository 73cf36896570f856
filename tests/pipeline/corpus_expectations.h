/// What other programs found in the real files.
#pragma once

#include "tests/support/corpus.h"

#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace quorvex::pipeline_test {

/// The lines that a command prints.
inline std::vector<std::string> LinesOf(const std::string& command) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::stringstream text;
    for (int c = 0; (c = std::fgetc(pipe.get())) != EOF;) text << static_cast<char>(c);
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    return lines;
}

/// What a script of this folder prints of the corpus.
inline std::vector<std::string> ExpectationsBy(const std::string& script) {
    return LinesOf("python3 " QUORVEX_SOURCE_DIR "/tests/pipeline/" + script + " '" +
                   (test::CorpusFolder() / "MANIFEST.json").string() + "'");
}

}  // namespace quorvex::pipeline_test
