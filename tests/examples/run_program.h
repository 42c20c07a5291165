#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <string>

namespace datumfit::tests {

struct Outcome {
    int code;
    std::string text;  // of both streams
};

inline Outcome run(std::string const & command) {
    std::FILE * const pipe = popen((command + " 2>&1").c_str(), "r");
    Outcome outcome{-1, ""};
    char block[4096];
    for (std::size_t n; (n = std::fread(block, 1, sizeof block, pipe)) > 0;) outcome.text.append(block, n);
    outcome.code = WEXITSTATUS(pclose(pipe));
    return outcome;
}

}  // namespace datumfit::tests
