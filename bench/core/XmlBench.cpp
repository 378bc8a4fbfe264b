#include "Harness.h"
#include "zelvar/xml/XMLNode.h"

namespace {

using namespace zelvar;

// A connections file as large as no sane one is: 20 MB in 300,000 elements. The limits are passes over its bytes that
// do no more than tell tags from texts.
bench::Register const xml("xml", [] {
    constexpr std::size_t bytes = std::size_t{20} << 20U;
    constexpr double mebibyte = 1 << 20U;
    DString text = "<DataSources>\n";
    for (int i = 0; text.size() < bytes; ++i)
        text += R"(  <DataSource name="source )" + std::to_string(i) + R"(" visible="yes"><URL>/data/)" +
                std::to_string(i) + "/image.tif</URL></DataSource>\n";
    text += "</DataSources>\n";
    std::size_t volatile keep = 0;
    auto const pass = [&] {
        std::size_t inTags = 0;
        bool isTag = false;
        for (char const c : text) {
            isTag = c == '<' || (isTag && c != '>');
            inTags += isTag ? 1 : 0;
        }
        keep = inTags;
    };
    XMLNode root;
    std::size_t const before = bench::ResidentBytes();
    root.LoadText(text);
    bench::Figure("xml.memory_20_mb", static_cast<double>(bench::ResidentBytes() - before) / mebibyte, "MB",
                  {.limit = 80});
    auto const loaded = bench::Compare(
        5, [&] { root.LoadText(text); }, pass);
    bench::Figure("xml.load_20_mb", loaded.ratio, "x", {.limit = 3.5, .note = "of a bare pass"});
    bench::Figure("xml.load_20_mb_ms", loaded.firstMs, "ms", {.alternatives = {{"a bare pass", loaded.secondMs}}});
    auto const saved = bench::Compare(
        3, [&] { std::ignore = root.SaveText(); }, pass);
    bench::Figure("xml.save_20_mb", saved.ratio, "x", "of a bare pass");
    bench::Figure("xml.save_20_mb_ms", saved.firstMs, "ms", {.alternatives = {{"a bare pass", saved.secondMs}}});
});

} // namespace
