#pragma once

#include "Palette.h"

#include "Platform/Foundation/NSRange.h"

#include <cstdint>
#include <memory>
#include <utility>

namespace highlight {

/// A stretch of the text that looks the same all over. Places are UTF-16 code units.
struct Run {
    quorvane::NSRange range;
    const quorvane::NSAttributes &attributes;
};

/// The runs of a text, in order and without gaps. There are about as many as words, and a few dozen looks: so
/// each is kept as where it starts and the number of its look. New memory costs more than painting it does.
class Runs {
public:
    /// A run reaches to the start of the next one. One word holds texts of a tera-unit and more looks than
    /// themes have rules.
    struct Start {
        std::uint64_t location : 40;
        std::uint64_t look : 24;
    };

    /// Memory for so many, which is not touched before it is used.
    struct Room {
        std::unique_ptr<Start[]> starts;
        std::size_t size = 0;

        Room() = default;
        explicit Room(std::size_t count)
            : starts(std::make_unique_for_overwrite<Start[]>(count)), size(count) {}
    };

    Runs() = default;
    /// The last one reaches to the end. No start is behind the next one.
    Runs(Room room, std::size_t count, quorvane::NSUInteger end, std::unique_ptr<Palette> palette)
        : _room(std::move(room)), _count(count), _end(end), _palette(std::move(palette)) {}
    /// Room for so many at least, which was these ones' if it is large enough.
    Room takeRoom(std::size_t count) {
        _count = 0;
        return _room.size >= count ? std::exchange(_room, Room()) : Room(count);
    }
    /// A palette of these defaults, which was these ones' if theirs were the same.
    std::unique_ptr<Palette> takePalette(const quorvane::NSAttributes &defaults) {
        _count = 0;
        return _palette && _palette->defaults() == defaults ? std::move(_palette)
                                                            : std::make_unique<Palette>(defaults);
    }

    std::size_t size() const { return _count; }
    Run operator[](std::size_t index) const {
        const Start &start = _room.starts[index];
        const quorvane::NSUInteger end = index + 1 < _count ? _room.starts[index + 1].location : _end;
        return {{start.location, end - start.location}, (*_palette)[start.look]};
    }

    class Iterator {
    public:
        Iterator(const Runs &runs, std::size_t index) : _runs(&runs), _index(index) {}
        Run operator*() const { return (*_runs)[_index]; }
        Iterator &operator++() {
            ++_index;
            return *this;
        }
        bool operator==(const Iterator &other) const { return _index == other._index; }

    private:
        const Runs *_runs;
        std::size_t _index;
    };
    Iterator begin() const { return {*this, 0}; }
    Iterator end() const { return {*this, size()}; }

private:
    Room _room;
    std::size_t _count = 0;
    quorvane::NSUInteger _end = 0;
    std::unique_ptr<Palette> _palette;
};

} // namespace highlight
