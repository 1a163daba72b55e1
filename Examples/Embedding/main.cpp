// Reads a language, parses a text, follows a keystroke, and tells what stands where.
#include <Quorvane/Quorvane.h>

#include <iostream>

using namespace quorvane;

int main(int argc, char **argv) {
    const char *file = argc > 1 ? argv[1] : "Examples/Embedding/settings.xml";
    std::shared_ptr<NSError> error;
    const auto syntax =
        QVSyntax::initWithContentsOfURL(NSURL::fileURLWithPath(NSString::stringWithUTF8String(file)), &error);
    if (!syntax) {
        std::cerr << (error ? error->localizedDescription().UTF8String() : "no syntax") << '\n';
        return 1;
    }

    const auto parse = QVParse::initWithSyntax(syntax, 0, QVParsePrivateQueueConcurrencyType);
    parse->performWritingBlockAndWait([&] {
        parse->replaceCharactersInRange({0, 0}, u"answer = 41 # so far\n", nullptr);
        parse->replaceCharactersInRange({10, 1}, u"2", nullptr);
    });

    parse->performReadingBlockAndWait([&] {
        for (const QVScopeMatch *match : parse->rootMatch()->submatches()) {
            if (match->scope()->type() != QVScopeTypeMatch)
                continue; // blanks and line ends
            const auto [location, length] = match->fullRange();
            std::cout << match->scope()->name().UTF8String() << ": "
                      << NSString(parse->string().substr(location, length)).UTF8String() << '\n';
        }
    });
}
