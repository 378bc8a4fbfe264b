#include "zelvar/base/NaturalOrder.h"
#include "zelvar/base/PathStyle.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

// Lines of the input are names. The keys of any two agree with their comparison, and masks come to an end.

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size) {
    using namespace zelvar;
    auto const sign = [](int value) { return (value > 0) - (value < 0); };
    constexpr std::size_t mostNames = 40;
    std::vector<DString> names = Split({reinterpret_cast<char const *>(data), size}, '\n');
    names.resize(std::min(names.size(), mostNames));
    for (DString const &a : names) {
        DString const key = MakeFileNameKey(a);
        for (DString const &b : names) {
            int const order = CompareFileNames(a, b);
            if (sign(order) != sign(key.compare(MakeFileNameKey(b))) || order != -CompareFileNames(b, a))
                std::abort();
            if (PathMatchSpec(a, b) && !PathMatchSpec(FoldCase(a), b))
                std::abort();
        }
        if (!PathMatchSpec(a, "*") || ToValidUtf8(ToValidUtf8(a)) != ToValidUtf8(a) || !EqualNoCase(a, FoldCase(a)))
            std::abort();
        for (PathStyle const style : {PathStyle::Native(), PathStyle::Windows()}) {
            std::string_view const parent = ParentPathOf(a, style);
            if (parent.size() + FileNameOf(a, style).size() > a.size() ||
                AppendPath(parent, a, style).empty() != a.empty())
                std::abort();
        }
    }
    return 0;
}
