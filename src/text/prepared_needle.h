/// The search that takes no longer however much of a needle stands in a text, and needs memory.
#ifndef PORTINGLAYER_TEXT_PREPARED_NEEDLE_H
#define PORTINGLAYER_TEXT_PREPARED_NEEDLE_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "text/allocation.h"

/// A needle prepared as Knuth, Morris and Pratt do: a character of the text that was passed is not
/// looked at again. Counts from the end at which the search begins.
template <bool FROM_END, typename Needle>
class PreparedNeedle {
public:
    explicit PreparedNeedle(Needle& sought) : needle(sought), count(sought.length()) {
        if (count <= UINT32_MAX) steps.reset(_newText<Step>(count, 0, 0));
        if (steps == nullptr) return;

        std::size_t border = 0;
        for (std::size_t i = 0; i < count; ++i) {
            wchar_t const next = needle[FROM_END ? count - 1 - i : i];
            if (i > 0) border = matching(border, next);
            steps[i] = {next, static_cast<std::uint32_t>(border)};
        }
    }

    /// Whether there was memory for it, and its length can be counted in 32 bits.
    bool usable() const { return steps != nullptr; }

    wchar_t const* find(wchar_t const* text, std::size_t places) const {
        std::size_t const end = places + count - 1;
        std::size_t matched = 0;
        for (std::size_t i = 0; i < end; ++i) {
            std::size_t const at = FROM_END ? end - 1 - i : i;
            matched = matching(matched, needle.folded(text[at]));
            if (matched == count) return text + (FROM_END ? at : at + 1 - count);
        }
        return nullptr;
    }

private:
    struct Step {
        wchar_t character;
        std::uint32_t border;  // the longest beginning of the needle that also ends here
    };

    /// How much matches once `next` follows on `matched` characters.
    std::size_t matching(std::size_t matched, wchar_t next) const {
        while (steps[matched].character != next) {
            if (matched == 0) return 0;
            matched = steps[matched - 1].border;
        }
        return matched + 1;
    }

    Needle& needle;
    std::size_t count;
    std::unique_ptr<Step[]> steps;
};

#endif
