// Reads a language, parses a text, follows a keystroke, and tells what stands where.
#include <Quorvane/Quorvane.h>

#include <iostream>

using namespace quorvane;

int main(int argc, char **argv) {
    const char *file = argc > 1 ? argv[1] : "Examples/Embedding/settings.xml";
    const NSURL url = NSURL::fileURLWithPath(NSString::stringWithUTF8String(file));
    const auto syntax = QVSyntax::initWithContentsOfURL(url);
    if (!syntax) {
        std::cerr << "no syntax in " << file << '\n';
        return 1;
    }

    const auto parse = QVParse::initWithSyntax(syntax, 0, QVParsePrivateQueueConcurrencyType);
    parse->performWritingBlockAndWait([&] {
        parse->replaceCharactersInRange({0, 0}, u"answer = 41 # so far\n", nullptr);
        parse->replaceCharactersInRange({10, 1}, u"2", nullptr);
    });
    parse->performReadingBlockAndWait([&] {
        for (const QVScopeMatch *match : parse->rootMatch()->submatches()) {
            const auto [location, length] = match->fullRange();
            const NSString text(parse->string().substr(location, length));
            if (match->scope()->type() == QVScopeTypeMatch) // neither blanks nor line ends
                std::cout << match->scope()->name().UTF8String() << ": " << text.UTF8String() << '\n';
        }
    });
}
