#pragma once

#include "Platform/CoreText/CTFont.h"

#include <mutex>

typedef struct FT_FaceRec_ *FT_Face;
typedef struct hb_font_t hb_font_t;

namespace quorvane {

/// An installed face: what the system's list says of it, and its file once it was opened. One object for each
/// face of the process, kept to its end.
struct CTFont::Face {
    NSString postScriptName;
    NSString familyName;
    std::string file;
    /// In the file; the upper half is a named instance.
    int index = 0;
    CTFontSymbolicTraits traits = 0;
    /// As the list counts them.
    int weight = 0;
    int width = 0;

    // In units of the outlines; there once the file was opened.
    unsigned unitsPerEm = 0;
    int ascender = 0;
    int descender = 0;
    int height = 0;
    int underlinePosition = 0;
    int underlineThickness = 0;

    /// The library's face is used by one thread at a time.
    mutable std::mutex lock;
    FT_Face freeTypeFace = nullptr;

    mutable std::once_flag shaperOnce;
    /// See `CTFontFaceShaper`.
    mutable hb_font_t *shaper = nullptr;
};

/// What lines are shaped with, in units of the outlines; null for a file that has no tables for it. It reads
/// the file by itself, so that it needs no lock. Any thread.
hb_font_t *CTFontFaceShaper(const CTFont::Face &face);

/// The face of a PostScript name, a full name or a family, in this order; null where there is none.
std::shared_ptr<CTFont::Face> CTFontFaceWithName(const NSString &name);
/// The system's monospaced face, null where there is no font at all.
std::shared_ptr<CTFont::Face> CTFontMonospacedFace();
/// The face of the same family whose bold and italic traits are these and which else is closest; null where
/// there is none.
std::shared_ptr<CTFont::Face> CTFontFaceWithTraits(const CTFont::Face &face, CTFontSymbolicTraits traits);

} // namespace quorvane
