#pragma once

#include "Platform/Foundation/NSString.h"

namespace quorvane {

class QVParse;

/// Gets what a parse has to say about its grammar.
class QV_EXPORT QVParseDelegate {
public:
    virtual ~QVParseDelegate() = default;

    /// A message for the grammar's author: level 5 for what was ignored, level 9 for what is wrong. Called on
    /// the thread that holds the parse's write access. Answers whether it took the message; one that nobody
    /// takes goes to the log.
    virtual bool parseLogDiagnosticMessage(QVParse &parse, const NSString &message, NSUInteger level) {
        static_cast<void>(parse);
        static_cast<void>(message);
        static_cast<void>(level);
        return false;
    }
};

} // namespace quorvane
