// The walk over a search list, and the answers it gave. A list of fontconfig's costs far more than
// all the rest of a font, and hosts ask for the same few fonts again and again, so an answer stays
// good for as long as fontconfig would list the same fonts.
#include "fonts/search.h"

#include <map>
#include <span>
#include <utility>
#include <vector>

#include "fonts/catalogue.h"
#include "fonts/search_lists.h"

namespace wexelxi {

namespace {

// The fonts that lists are made from. It shares them and their configuration, so that none of the
// addresses it compares can come back as another font's.
class FontStock {
public:
    static FontStock Current();

    bool IsEmpty() const { return !config_; }
    FcConfig *config() const { return config_.get(); }
    bool IsStill(FcConfig *config) const;

private:
    ConfigPtr config_;
    std::vector<PatternPtr> fonts_;
};

std::span<FcPattern *const> FontsOf(FcConfig *config, FcSetName name)
{
    const FcFontSet *set = FcConfigGetFonts(config, name);
    if (!set || set->nfont <= 0)
        return {};
    return {set->fonts, static_cast<size_t>(set->nfont)};
}

FontStock FontStock::Current()
{
    FontStock stock;
    stock.config_.reset(FcConfigReference(nullptr));
    if (!stock.config_)
        return stock;
    for (const FcSetName name : {FcSetSystem, FcSetApplication}) {
        for (FcPattern *font : FontsOf(stock.config(), name))
            stock.fonts_.push_back(ShareOf(font));
    }
    return stock;
}

bool FontStock::IsStill(FcConfig *config) const
{
    if (!config || config != config_.get())
        return false;
    const auto system = FontsOf(config, FcSetSystem);
    const auto application = FontsOf(config, FcSetApplication);
    if (system.size() + application.size() != fonts_.size())
        return false;
    const PatternPtr *known = fonts_.data();
    for (const auto &fonts : {system, application}) {
        for (const FcPattern *font : fonts) {
            if ((known++)->get() != font)
                return false;
        }
    }
    return true;
}

// What was found in one stock: family and search list to pattern, null where nothing fits.
struct FoundFonts {
    static constexpr size_t kMost = 128;
    using Key = std::pair<const SearchRow *, std::string>;

    FontStock stock;
    std::map<Key, PatternPtr> answers;
};

// Never destroyed: other threads may still be at work when the process ends.
FoundFonts &Found()
{
    static FoundFonts &found = *new FoundFonts;
    return found;
}

// The first font of a list, or the first TrueType file in it.
PatternPtr Choose(const FcFontSet *set)
{
    if (!set || set->nfont <= 0)
        return nullptr;
    FcPattern *const *const end = set->fonts + set->nfont;
    for (FcPattern *const *font = set->fonts; font != end; font++) {
        const char *file = FileOf(*font);
        if (file && HasTrueTypeName(file))
            return ShareOf(*font);
    }
    return ShareOf(set->fonts[0]);
}

PatternPtr Walk(FcConfig *config, const std::string &family, std::span<const SearchRow> list)
{
    const PatternPtr base(FcPatternCreate());
    const ObjectSetPtr objects(
        FcObjectSetBuild(FC_FAMILY, FC_WEIGHT, FC_SLANT, FC_FILE, FC_OUTLINE, FC_SPACING, nullptr));
    if (!base || !objects || !FcPatternAddString(base.get(), FC_FAMILY, FcText(family.c_str())) ||
        !FcPatternAddBool(base.get(), FC_OUTLINE, FcTrue))
        return nullptr;
    for (const SearchRow &row : list) {
        const PatternPtr query(FcPatternDuplicate(base.get()));
        if (!query || !FcPatternAddInteger(query.get(), FC_WEIGHT, row.weight) ||
            !FcPatternAddInteger(query.get(), FC_SLANT, row.slant))
            return nullptr;
        const FontSetPtr set(FcFontList(config, query.get(), objects.get()));
        if (PatternPtr chosen = Choose(set.get()))
            return chosen;
    }
    return nullptr;
}

} // namespace

PatternPtr FindFont(const std::string &family, int32_t weight, bool italic)
{
    // As a list on the current configuration does it: fonts that came or went are noticed here.
    if (!FcInitBringUptoDate())
        return nullptr;
    FoundFonts &found = Found();
    if (const ConfigPtr current(FcConfigReference(nullptr)); !found.stock.IsStill(current.get())) {
        StartSearches();
        ReloadFontMaps();
    }
    if (found.stock.IsEmpty())
        return nullptr;

    const auto list = SearchListFor(weight, italic);
    FoundFonts::Key key(list.data(), family);
    if (const auto known = found.answers.find(key); known != found.answers.end())
        return ShareOf(known->second.get());
    PatternPtr chosen = Walk(found.stock.config(), family, list);
    if (found.answers.size() >= FoundFonts::kMost)
        found.answers.clear();
    PatternPtr answer = ShareOf(chosen.get());
    found.answers.emplace(std::move(key), std::move(chosen));
    return answer;
}

void StartSearches()
{
    EndSearches();
    Found().stock = FontStock::Current();
}

void EndSearches()
{
    Found() = FoundFonts();
}

const char *FileOf(const FcPattern *font)
{
    FcChar8 *file = nullptr;
    if (FcPatternGetString(font, FC_FILE, 0, &file) != FcResultMatch)
        return nullptr;
    return reinterpret_cast<const char *>(file);
}

bool IsOutline(const FcPattern *font)
{
    FcBool outline = FcFalse;
    return FcPatternGetBool(font, FC_OUTLINE, 0, &outline) == FcResultMatch && outline == FcTrue;
}

bool IsMonospaced(const FcPattern *font)
{
    int spacing = 0;
    return FcPatternGetInteger(font, FC_SPACING, 0, &spacing) == FcResultMatch &&
           spacing == FC_MONO;
}

} // namespace wexelxi
