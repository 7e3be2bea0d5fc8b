#pragma once

#include <orvaspace/ustr.h>
#include <orvatool/Lng.h>

#include <cstdint>
#include <string_view>
#include <vector>

/// The translations of one language: the file `lang\<language>.xlf` beside the toolkit.
class LngCatalogue {
public:
    /// Reads the catalogue of a language of Languages(). A file that cannot be read as a whole gives none of its texts.
    static LngCatalogue Load(const ustr& language);

    /// The languages that have a catalogue, sorted.
    static std::vector<ustr> Languages();

    /// The translation; null for none. Lives as long as the catalogue.
    const ustr* Find(Lng::AppID app, int textId) const;

private:
    struct Unit {
        std::uint64_t key;
        ustr target;
    };

    static std::uint64_t Key(Lng::AppID app, int textId);
    void Read(const ustr& file);
    void Add(std::string_view id, std::string_view target);

    std::vector<Unit> units_;  // sorted by key
};
