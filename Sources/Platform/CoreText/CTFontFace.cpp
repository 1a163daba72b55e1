#include "Platform/CoreText/CTFontFace.h"

#include "Platform/Foundation/QVLimits.h"

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include <hb-ot.h>

#include <cstdlib>
#include <map>
#include <unordered_map>

namespace quorvane {

namespace {

struct PatternDeleter {
    void operator()(FcPattern *pattern) const { FcPatternDestroy(pattern); }
};
using Pattern = std::unique_ptr<FcPattern, PatternDeleter>;

struct FontSetDeleter {
    void operator()(FcFontSet *set) const { FcFontSetDestroy(set); }
};
using FontSet = std::unique_ptr<FcFontSet, FontSetDeleter>;

using FaceRef = std::shared_ptr<CTFont::Face>;

/// The process's faces. Never destroyed: fonts may be used while the process ends.
struct Faces {
    std::mutex lock;
    FT_Library library = nullptr;
    std::map<std::pair<std::string, int>, FaceRef> opened;
    /// By the names that were asked for; null for those that are not installed.
    std::unordered_map<NSString, FaceRef> named;
    FaceRef monospaced;

    Faces() {
        if (FT_Init_FreeType(&library) != 0)
            library = nullptr;
    }
};

Faces &faces() {
    static auto *const faces = new Faces;
    return *faces;
}

NSString stringOf(FcPattern *pattern, const char *object) {
    FcChar8 *value = nullptr;
    if (FcPatternGetString(pattern, object, 0, &value) != FcResultMatch)
        return nullptr;
    return NSString::stringWithUTF8String(reinterpret_cast<const char *>(value));
}

int integerOf(FcPattern *pattern, const char *object, int otherwise) {
    int value = 0;
    return FcPatternGetInteger(pattern, object, 0, &value) == FcResultMatch ? value : otherwise;
}

CTFontSymbolicTraits traitsOf(FcPattern *pattern) {
    CTFontSymbolicTraits traits = 0;
    if (integerOf(pattern, FC_SLANT, FC_SLANT_ROMAN) != FC_SLANT_ROMAN)
        traits |= kCTFontTraitItalic;
    if (integerOf(pattern, FC_WEIGHT, FC_WEIGHT_REGULAR) >= FC_WEIGHT_DEMIBOLD)
        traits |= kCTFontTraitBold;
    if (integerOf(pattern, FC_SPACING, FC_PROPORTIONAL) >= FC_MONO)
        traits |= kCTFontTraitMonoSpace;
    return traits;
}

/// The face of a pattern of the system's list; null where its file can't be read. Called under the lock.
FaceRef openedFace(Faces &all, FcPattern *pattern) {
    FcChar8 *file = nullptr;
    if (all.library == nullptr || FcPatternGetString(pattern, FC_FILE, 0, &file) != FcResultMatch)
        return nullptr;
    auto face = std::make_shared<CTFont::Face>();
    face->file = reinterpret_cast<const char *>(file);
    face->index = integerOf(pattern, FC_INDEX, 0);
    const auto key = std::pair(face->file, face->index);
    if (const auto found = all.opened.find(key); found != all.opened.end())
        return found->second;

    if (FT_New_Face(all.library, face->file.c_str(), face->index, &face->freeTypeFace) != 0)
        return nullptr;
    const FT_Face opened = face->freeTypeFace;
    if (!FT_IS_SCALABLE(opened) || opened->units_per_EM == 0) {
        FT_Done_Face(opened);
        return nullptr;
    }
    face->familyName = stringOf(pattern, FC_FAMILY);
    face->postScriptName = stringOf(pattern, FC_POSTSCRIPT_NAME);
    if (!face->postScriptName)
        face->postScriptName = face->familyName;
    face->traits = traitsOf(pattern);
    face->weight = integerOf(pattern, FC_WEIGHT, FC_WEIGHT_REGULAR);
    face->width = integerOf(pattern, FC_WIDTH, FC_WIDTH_NORMAL);
    face->unitsPerEm = opened->units_per_EM;
    face->ascender = opened->ascender;
    face->descender = opened->descender;
    face->height = opened->height;
    face->underlinePosition = opened->underline_position;
    face->underlineThickness = opened->underline_thickness;
    return all.opened.emplace(key, std::move(face)).first->second;
}

/// The installed outlines with this value.
FontSet listed(const char *object, const std::string &value) {
    const Pattern pattern(FcPatternCreate());
    FcPatternAddString(pattern.get(), object, reinterpret_cast<const FcChar8 *>(value.c_str()));
    FcPatternAddBool(pattern.get(), FC_SCALABLE, FcTrue);
    // Fonts with axes are listed once as a whole and once for each named instance; only instances have a
    // weight.
    FcPatternAddBool(pattern.get(), FC_VARIABLE, FcFalse);
    FcObjectSet *const objects =
        FcObjectSetBuild(FC_FILE, FC_INDEX, FC_FAMILY, FC_POSTSCRIPT_NAME, FC_SLANT, FC_WEIGHT, FC_WIDTH,
                         FC_SPACING, static_cast<const char *>(nullptr));
    FontSet set(FcFontList(nullptr, pattern.get(), objects));
    FcObjectSetDestroy(objects);
    return set;
}

/// The face with these bold and italic traits that is closest in width and weight, of equals the first by
/// name, so that the answer does not hang on the order of the system's list.
FcPattern *closest(const FontSet &set, CTFontSymbolicTraits traits, int weight, int width) {
    constexpr CTFontSymbolicTraits kinds = kCTFontTraitItalic | kCTFontTraitBold;
    FcPattern *best = nullptr;
    auto order = [&](FcPattern *pattern) {
        return std::tuple(std::abs(integerOf(pattern, FC_WIDTH, FC_WIDTH_NORMAL) - width),
                          std::abs(integerOf(pattern, FC_WEIGHT, FC_WEIGHT_REGULAR) - weight),
                          stringOf(pattern, FC_POSTSCRIPT_NAME));
    };
    for (int index = 0; set && index < set->nfont; ++index) {
        FcPattern *const pattern = set->fonts[index];
        if ((traitsOf(pattern) & kinds) == (traits & kinds) && (!best || order(pattern) < order(best)))
            best = pattern;
    }
    return best;
}

} // namespace

std::shared_ptr<CTFont::Face> CTFontFaceWithName(const NSString &name) {
    Faces &all = faces();
    const std::lock_guard guard(all.lock);
    if (const auto found = all.named.find(name); found != all.named.end())
        return found->second;

    const std::string utf8 = name.UTF8String();
    FaceRef face;
    // A zero would end the name for the library.
    if (!utf8.empty() && utf8.find('\0') == std::string::npos)
        for (const char *const object : {FC_POSTSCRIPT_NAME, FC_FULLNAME, FC_FAMILY}) {
            const FontSet set = listed(object, utf8);
            // A family's name means its plain face, the others' the one face that has it.
            FcPattern *pattern = closest(set, 0, FC_WEIGHT_REGULAR, FC_WIDTH_NORMAL);
            if (!pattern && set && set->nfont > 0)
                pattern = set->fonts[0];
            if (pattern && (face = openedFace(all, pattern)))
                break;
        }
    if (all.named.size() < limits::rememberedFontNames)
        all.named.emplace(name, face);
    return face;
}

std::shared_ptr<CTFont::Face> CTFontMonospacedFace() {
    Faces &all = faces();
    const std::lock_guard guard(all.lock);
    if (all.monospaced)
        return all.monospaced;
    const Pattern wanted(FcPatternCreate());
    FcPatternAddString(wanted.get(), FC_FAMILY, reinterpret_cast<const FcChar8 *>("monospace"));
    FcPatternAddBool(wanted.get(), FC_SCALABLE, FcTrue);
    FcConfigSubstitute(nullptr, wanted.get(), FcMatchPattern);
    FcDefaultSubstitute(wanted.get());
    FcResult result{};
    const Pattern matched(FcFontMatch(nullptr, wanted.get(), &result));
    if (matched)
        all.monospaced = openedFace(all, matched.get());
    return all.monospaced;
}

std::shared_ptr<CTFont::Face> CTFontFaceWithTraits(const CTFont::Face &face, CTFontSymbolicTraits traits) {
    Faces &all = faces();
    const std::lock_guard guard(all.lock);
    const FontSet set = listed(FC_FAMILY, face.familyName.UTF8String());
    int weight = face.weight;
    if ((traits ^ face.traits) & kCTFontTraitBold)
        weight = traits & kCTFontTraitBold ? FC_WEIGHT_BOLD : FC_WEIGHT_REGULAR;
    FcPattern *const pattern = closest(set, traits, weight, face.width);
    return pattern ? openedFace(all, pattern) : nullptr;
}

hb_font_t *CTFontFaceShaper(const CTFont::Face &face) {
    std::call_once(face.shaperOnce, [&face] {
        hb_blob_t *const file = hb_blob_create_from_file(face.file.c_str());
        hb_face_t *const opened = hb_face_create(file, static_cast<unsigned>(face.index) & 0xFFFF);
        hb_blob_destroy(file);
        // Fonts without the tables that all modern ones have are set character by character.
        if (hb_face_get_glyph_count(opened) != 0) {
            face.shaper = hb_font_create(opened);
            hb_ot_font_set_funcs(face.shaper);
            const auto units = static_cast<int>(face.unitsPerEm);
            hb_font_set_scale(face.shaper, units, units);
            if (const unsigned instance = static_cast<unsigned>(face.index) >> 16)
                hb_font_set_var_named_instance(face.shaper, instance - 1);
            hb_font_make_immutable(face.shaper);
        }
        hb_face_destroy(opened);
    });
    return face.shaper;
}

} // namespace quorvane
