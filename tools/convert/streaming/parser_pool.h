/// Parsers of one file, one for each thread that reads frames of it.
#pragma once

#include "quorvex/CxDcmParser.h"

#include <memory>
#include <mutex>
#include <vector>

namespace quorvex::tools {

class ParserPool {
public:
    /// @param isOfOneThread  the parser itself serves it
    ParserPool(CxDcmParser& parser, bool isOfOneThread)
        : parser_(parser), isOfOneThread_(isOfOneThread) {}

    /// Does the work with a parser that nobody else uses meanwhile.
    template <class Work>
    auto With(const Work& work) {
        if (isOfOneThread_) return work(parser_);
        auto taken = Take();
        auto result = work(*taken);
        const std::lock_guard lock(mutex_);
        idle_.push_back(std::move(taken));
        return result;
    }

private:
    std::unique_ptr<CxDcmParser> Take() {
        const std::lock_guard lock(mutex_);
        if (idle_.empty()) return std::make_unique<CxDcmParser>(parser_);
        auto taken = std::move(idle_.back());
        idle_.pop_back();
        return taken;
    }

    CxDcmParser& parser_;
    bool isOfOneThread_;
    std::mutex mutex_;  // of all below, and of copying
    std::vector<std::unique_ptr<CxDcmParser>> idle_;
};

}  // namespace quorvex::tools
