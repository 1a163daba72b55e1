#pragma once

#include "Tests/Support/RLEArrayModel.h"

#include <sstream>
#include <string>

/// The law of the run array: after any edits, and whatever a walk's callback does to it, it answers what its
/// obvious twin answers, and each slot holds the value that was put there.
namespace quorvane::test {

/// Makes edits out of choices (random numbers or a fuzzer's bytes): `choose(n)` answers a number below n.
template <typename Choose> class RLEArrayLaw {
public:
    RLEArrayLaw(std::size_t runsPerChunk, Choose choice)
        : _array(runsPerChunk), _source(runsPerChunk), _choose(std::move(choice)) {}

    /// One edit. Answers what is wrong after it; empty if nothing is.
    std::string step() {
        _did.str({});
        switch (_choose(8)) {
        case 0:
        case 1:
            insert();
            break;
        case 2:
            remove();
            break;
        case 3:
        case 4:
            replaceWithObject();
            break;
        case 5:
            replaceWithArray();
            break;
        case 6:
            makeSource();
            break;
        default:
            if (std::string difference = walk(); !difference.empty())
                return _did.str() + difference;
            break;
        }
        const std::string difference = compare();
        return difference.empty() ? difference : _did.str() + difference;
    }

private:
    using Value = std::shared_ptr<Tag>;

    Value value() {
        const NSUInteger choice = _choose(5);
        // Equal values are different objects, so that it shows which one survives.
        return choice == 0 ? nullptr : std::make_shared<Tag>(static_cast<char16_t>('a' + choice));
    }
    static char16_t letter(const Value &value) { return value ? value->letter : u'-'; }

    /// A range inside, often at the borders of runs.
    NSRange range(NSUInteger count) {
        const auto place = [&]() -> NSUInteger {
            if (_choose(2) == 0 || _model.runs.empty())
                return _choose(count + 1);
            const auto &run = _model.runs[_choose(_model.runs.size())];
            return std::min(_choose(2) ? run->location : run->end(), count);
        };
        const NSUInteger a = place();
        const NSUInteger b = _choose(3) == 0 ? a : place();
        NSUInteger length = std::max(a, b) - std::min(a, b);
        if (_choose(4) != 0)
            length = std::min<NSUInteger>(length, 12);
        return {std::min(a, b), length};
    }

    void insert() {
        const NSRange at{range(_array.count()).location, _choose(6)};
        const Value object = value();
        _did << "insert " << at.length << " at " << at.location;
        _array.insertObject(object, at);
        _model.insert(object, at.location, at.length);
        _slots.insert(_slots.begin() + static_cast<std::ptrdiff_t>(at.location), at.length, letter(object));
    }
    void remove() {
        const NSRange gone = range(_array.count());
        _did << "delete " << gone.location << "," << gone.length;
        _array.deleteObjectsInRange(gone);
        _model.remove(gone);
        putSlots(gone, {});
    }
    void replaceWithObject() {
        const NSRange gone = range(_array.count());
        const NSUInteger length = _choose(3) == 0 ? gone.length : _choose(6);
        replace(gone, value(), length);
    }
    void replace(NSRange gone, const Value &object, NSUInteger length) {
        _did << " replace " << gone.location << "," << gone.length << " by " << length;
        _array.replaceObjectsInRange(gone, object, length);
        _model.replace(gone, object, length);
        putSlots(gone, std::u16string(length, letter(object)));
    }
    void replaceWithArray() {
        const NSRange gone = range(_array.count());
        const NSUInteger start = _choose(_source.count() + 1);
        const NSRange from{start, _choose(_source.count() - start + 1)};
        _did << "replace " << gone.location << "," << gone.length << " from " << from.location << ","
             << from.length;
        const bool isFront = gone.length != 0 && gone.location == 0;
        _array.replaceObjectsInRange(gone, _source, from);
        _model.replace(gone, _sourceModel, from);
        putSlots(gone, _sourceSlots.substr(isFront ? 0 : from.location, from.length));
    }
    void makeSource() {
        _source.deleteObjectsInRange({0, _source.count()});
        _sourceModel.remove({0, _sourceModel.count});
        _sourceSlots.clear();
        for (NSUInteger i = _choose(8); i > 0; --i) {
            const Value object = value();
            const NSUInteger length = 1 + _choose(3);
            _source.insertObject(object, {_source.count(), length});
            _sourceModel.insert(object, _sourceModel.count, length);
            _sourceSlots.append(length, letter(object));
        }
        _did << "source ";
    }
    void putSlots(NSRange gone, std::u16string_view letters) {
        _slots.replace(gone.location, gone.length, letters);
    }

    /// Walks both, with a callback that edits: both walks see the same numbers.
    std::string walk() {
        const NSUInteger options = _choose(4);
        const bool isReverse = (options & QVRLEArrayEnumerationReverse) != 0;
        NSRange asked = range(_array.count());
        if (!isReverse && _choose(4) == 0)
            asked.length += 10;
        struct Edit {
            NSRange range;
            Value value;
            NSUInteger length;
        };
        std::vector<Edit> edits;
        for (NSUInteger i = 0; i < 40; ++i)
            edits.push_back(_choose(3) != 0 ? Edit{{0, 0}, nullptr, 0}
                                            : Edit{{_choose(30), _choose(6)}, value(), _choose(6)});
        const NSUInteger stopsAt = _choose(60);
        _did << "walk " << asked.location << "," << asked.length << " options " << options << ": ";
        std::string seen[2];
        const auto callback = [&](int which, auto &&edit) {
            return [&, which, edit, calls = std::size_t(0)](const Value &value, NSRange part,
                                                            bool &stop) mutable {
                const char16_t before = letter(value);
                seen[which] += static_cast<char>(before);
                seen[which] += std::to_string(part.location) + "," + std::to_string(part.length) + " ";
                if (calls < edits.size() && (edits[calls].range.length | edits[calls].length) != 0)
                    edit(edits[calls], part);
                if (letter(value) != before)
                    seen[which] += "lost its value ";
                stop = ++calls > std::min<std::size_t>(edits.size(), stopsAt);
            };
        };
        const auto clip = [](const Edit &edit, NSRange part, NSUInteger count) {
            // Inside of the handed range, or anywhere.
            const NSUInteger location = std::min(
                edit.range.location % 2 ? part.location + edit.range.location / 8 : edit.range.location,
                count);
            return NSRange{location, std::min(edit.range.length, count - location)};
        };
        const std::u16string slots = _slots;
        auto inArray = callback(0, [&](const Edit &edit, NSRange part) {
            const NSRange gone = clip(edit, part, _array.count());
            _array.replaceObjectsInRange(gone, edit.value, edit.length);
            putSlots(gone, std::u16string(edit.length, letter(edit.value)));
        });
        _array.enumerateObjectsInRange(asked, options, inArray);
        auto inModel = callback(1, [&](const Edit &edit, NSRange part) {
            _model.replace(clip(edit, part, _model.count), edit.value, edit.length);
        });
        _model.enumerate(asked, options, [&](const Value &held, NSRange part, bool &stop) {
            const Value kept = held;
            inModel(kept, part, stop);
        });
        return seen[0] == seen[1] ? "" : " array saw " + seen[0] + " but should " + seen[1];
    }

    std::string compare() const {
        if (_array.count() != _model.count || _array.count() != _slots.size())
            return " count";
        const auto runs = _array.runs();
        if (runs.size() != _model.runs.size() || _array.numberOfRuns() != runs.size())
            return " number of runs";
        for (std::size_t i = 0; i < runs.size(); ++i) {
            const auto &run = *_model.runs[i];
            if (runs[i].location() != run.location || runs[i].length() != run.length)
                return " range of run " + std::to_string(i);
            if (runs[i].value() != run.value)
                return " value of run " + std::to_string(i);
            if (run.next != (i + 1 < runs.size() ? _model.runs[i + 1].get() : nullptr))
                return " link of the twin's run " + std::to_string(i);
            for (const NSUInteger slot : {run.location, run.end() - 1}) {
                NSRange range;
                NSUInteger index = 0;
                if (_array.objectAtIndex(slot, &range, &index) != run.value || index != i ||
                    range != NSRange{run.location, run.length} || _array.runIndexForIndex(slot) != i)
                    return " answer for slot " + std::to_string(slot);
            }
            for (NSUInteger slot = run.location; slot < run.end(); ++slot)
                if (_slots[slot] != letter(run.value))
                    return " letter of slot " + std::to_string(slot);
        }
        return {};
    }

    TagArray _array;
    TagArray _source;
    RLEArrayModel _model;
    RLEArrayModel _sourceModel;
    /// One value for each slot.
    std::u16string _slots;
    std::u16string _sourceSlots;
    Choose _choose;
    std::ostringstream _did;
};

} // namespace quorvane::test
