#pragma once

#include <cstddef>
#include <cstdint>

/// Every limit that keeps bad input from exhausting stack, memory or time, with its reason. Each is tested at
/// its bound and one past it.
namespace quorvane::limits {

/// Elements inside one another in an XML file; deeper files would recurse too deep in the readers.
inline constexpr std::size_t xmlNestingDepth = 256;
/// Bytes of an XML file; the largest real grammars are below one megabyte.
inline constexpr std::size_t xmlDocumentBytes = 64u << 20;

/// Bytes of a package's `package.json`, which holds a few words.
inline constexpr std::size_t packageManifestBytes = 1u << 20;
/// Bytes of a theme file; real ones have some kilobytes.
inline constexpr std::size_t themeBytes = 16u << 20;
/// Bytes of all archives that a cache folder keeps, so that versions of packages that are gone don't stay for
/// ever; a large language's archive has half a megabyte.
inline constexpr std::size_t packageCacheBytes = 128u << 20;

/// Objects inside one another in an archive; a grammar nests two objects for each level of its scopes.
inline constexpr std::size_t archiveNestingDepth = 1024;
/// Bytes of an archive.
inline constexpr std::size_t archiveBytes = 256u << 20;
/// Fields of one object in an archive; a language has thirty. A field is looked for among all of its object,
/// which others may name a million times.
inline constexpr std::size_t archiveFields = 256;
/// Values in an archive, each counted as often as it is referred to; an object takes about fifty bytes while
/// it is read. The same number bounds the entries of all lists that one decoding reads.
inline constexpr std::size_t archiveReferences = 8u << 20;
/// Containers inside one another in an archive's property list, which is flat: its objects name each other by
/// index. Checks of references follow them by recursion.
inline constexpr std::size_t propertyListNestingDepth = 16;

/// Open regions of a parse, the root being one of them: where a document nests deeper, the region is closed
/// at once.
inline constexpr std::size_t parseNestingDepth = 100;

/// Kibibytes of heap that one attempt of a grammar's pattern may take; a pattern that needs more does not
/// match.
inline constexpr std::uint32_t patternHeapKibibytes = 64u << 10;
/// First and largest size of the stack that compiled patterns run on, in bytes.
inline constexpr std::size_t patternStackBytesAtStart = 64u << 10;
inline constexpr std::size_t patternStackBytesAtMost = 1u << 20;

/// Steps of a platform expression's search before it counts as "not found". One step is 10000 points to come
/// back to, about a tenth of a millisecond: a tenth of a second in all.
inline constexpr std::int32_t platformExpressionTimeLimit = 1000;

/// Steps of a chain of combinators; longer selectors are refused so that reading and freeing them can't
/// exhaust the stack.
inline constexpr std::size_t selectorChainLength = 1000;

/// End patterns, built from a template and the text of a region's start, that one parse keeps compiled.
inline constexpr std::size_t rememberedEndPatterns = 1024;

/// Slabs of match nodes, 64 KiB each, that are kept for the next document when one goes: so many hold the
/// tree of a source file of half a megabyte.
inline constexpr std::size_t spareMatchSlabs = 256;

/// Names whose grams are remembered, and the longest of them in units: some megabytes for the names of a
/// large project, and nothing for texts that are no names.
inline constexpr std::size_t rememberedGrams = 8192;
inline constexpr std::size_t rememberedGramsLength = 256;

/// Names of fonts whose faces are remembered; archives can bring any number of names.
inline constexpr std::size_t rememberedFontNames = 1024;

/// Entries of a cache, unless its owner says otherwise.
inline constexpr std::size_t cachedObjects = 1024;

/// Styles of a theme, and the properties of all of them, each counted for each selector that shares it: a
/// file of a megabyte can otherwise ask for any amount of memory. The largest themes have a few thousand.
inline constexpr std::size_t themeStylesAndProperties = 1u << 16;

/// Behaviours of all completions in a file, each counted for each completion that has it: those of a set are
/// in all of its completions, so that a file of a megabyte can otherwise ask for any amount of memory. Real
/// files have some thousands.
inline constexpr std::size_t completionBehaviors = 1u << 20;

/// Threads of one pool of workers, those that wait for others included. Tasks that wait for one another more
/// deeply than this never end.
inline constexpr std::size_t dispatchThreads = 512;

/// Units of a paragraph that are looked at, to either side, for where it begins and ends when its style is
/// fixed: typing in a line of megabytes must not cost a walk along it.
inline constexpr std::size_t paragraphFixingReach = 4000;

/// Pixels along one side of a bitmap; the drawing library counts them in 16 bits.
inline constexpr std::size_t bitmapSide = 32767;
/// Pixels of a bitmap, of four bytes each.
inline constexpr std::size_t bitmapPixels = 64u << 20;

} // namespace quorvane::limits
