#include "Harness.h"
#include "zelvar/base/XMLNode.h"

namespace {

using namespace zelvar;

// A connections file as large as no sane one is: 20 MB in 300,000 elements.
bench::Register const xml("xml", [] {
    constexpr std::size_t bytes = std::size_t{20} << 20U;
    DString text = "<DataSources>\n";
    for (int i = 0; text.size() < bytes; ++i)
        text += R"(  <DataSource name="source )" + std::to_string(i) + R"(" visible="yes"><URL>/data/)" +
                std::to_string(i) + "/image.tif</URL></DataSource>\n";
    text += "</DataSources>\n";
    XMLNode root;
    bench::Figure("xml.load_20_mb", bench::BestMs(3, [&] { root.LoadText(text); }), "ms", "parser alone 64");
    bench::Figure("xml.save_20_mb", bench::BestMs(3, [&] { text = root.SaveText(); }), "ms", "parser alone 69");
});

} // namespace
