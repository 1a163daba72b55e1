#pragma once

#include <memory>
#include <string>
#include <string_view>

/// A highlighter of files that the engine is held against.
class Peer {
public:
    virtual ~Peer() = default;
    virtual std::string name() const = 0;
    /// Takes a file in and loads what is needed for its language; whether there is one.
    virtual bool open(const std::string &path, std::u16string_view text) = 0;
    /// Highlights the whole file and answers how many pieces were formatted.
    virtual std::size_t highlight() = 0;
};

std::unique_ptr<Peer> makeKSyntaxHighlightingPeer();
