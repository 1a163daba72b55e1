#pragma once

#include "Platform/Foundation/NSData.h"
#include "Quorvane/XML/QVXMLDocument.h"

#include <gtest/gtest.h>

namespace quorvane::test {

/// The document that a text is, whose elements know their lines and columns.
inline std::shared_ptr<QVXMLDocument> documentOf(std::string_view text) {
    std::shared_ptr<NSError> error;
    auto document = QVXMLDocument::initWithData(NSData(text), &error);
    EXPECT_NE(document, nullptr) << "the fixture is no XML: " << text;
    return document ? document : QVXMLDocument::initWithRootElement(std::make_shared<QVXMLElement>());
}

/// The one top-level element of a text.
inline std::shared_ptr<QVXMLElement> elementOf(std::string_view text) {
    const auto document = documentOf(text);
    for (const auto &child : document->rootElement()->children())
        if (auto element = std::dynamic_pointer_cast<QVXMLElement>(child))
            return element;
    ADD_FAILURE() << "the fixture has no element: " << text;
    return std::make_shared<QVXMLElement>();
}

} // namespace quorvane::test
