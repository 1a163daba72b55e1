// A tool in small: prints the tree of an empty text in the language of a file.
#include <Host/QVMatchTreeText.h>
#include <Quorvane/Quorvane.h>

#include <iostream>

using namespace quorvane;

int main(int, char **argv) {
    const auto file = NSURL::fileURLWithPath(NSString::stringWithUTF8String(argv[1]));
    const auto syntax = QVSyntax::initWithContentsOfURL(file);
    if (!syntax)
        return 1;
    const auto parse = QVParse::initWithSyntax(syntax, 0, QVParsePrivateQueueConcurrencyType);
    parse->performReadingBlockAndWait([&] { std::cout << QVMatchTreeText(*parse); });
}
