#include "zelvar/data/reader/ConnectionNotes.h"

#include "support/Test.h"
#include "zelvar/data/wire/ConnectRecords.h"
#include "zelvar/data/wire/SealedMemory.h"

#include <sys/mman.h>

namespace zelvar {
namespace {

using wire::SealBytes;

ConnectionNotes::TermsPtr Terms(DString const &id, DString const &password) {
    return std::make_shared<ConnectionTerms const>(ConnectionTerms{.id = id, .secrets = {{"password", password}}});
}
FileDescriptor Note(std::size_t bytes) {
    std::vector<std::uint8_t> const content(bytes, 'x');
    return SealBytes({content});
}

TEST(ConnectionNotes, AreForReadersOfTheSameTermsAlone) {
    ConnectionNotes &notes = ConnectionNotes::Instance();
    EXPECT_TRUE(notes.Keep(Terms("a", "x"), "n", Note(3)));
    EXPECT_TRUE(notes.Keep(Terms("a", "x"), "n", Note(4)));
    auto const found = notes.Find(*Terms("a", "x"), "n");
    ASSERT_NE(found.file, nullptr);
    EXPECT_EQ(wire::UnsealBytes(found.file->Get(), 4), std::vector<std::uint8_t>(4, 'x')) << "the newer one";
    EXPECT_EQ(wire::UnsealBytes(found.file->Get(), 3), std::nullopt) << "longer than is wanted";
    EXPECT_EQ(notes.Find(*Terms("a", "y"), "n").file, nullptr) << "another account";
    EXPECT_EQ(notes.Find(*Terms("b", "x"), "n").file, nullptr);
    EXPECT_EQ(notes.Find(*Terms("a", "x"), "m").file, nullptr);
}

TEST(ConnectionNotes, WhatMayStillChangeOrIsTooMuchIsNotKept) {
    ConnectionNotes &notes = ConnectionNotes::Instance();
    auto const terms = Terms("c", "x");
    FileDescriptor open(memfd_create("test", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    EXPECT_FALSE(notes.Keep(terms, "n", std::move(open)));
    EXPECT_FALSE(notes.Keep(terms, "n", FileDescriptor(-1)));
    EXPECT_FALSE(notes.Keep(terms, "", Note(1)));
    EXPECT_FALSE(notes.Keep(terms, "n", Note(wire::kLongestNote + 1)));
    for (int i = 0; i < 40; ++i)
        EXPECT_TRUE(notes.Keep(terms, std::to_string(i), Note(1)));
    EXPECT_EQ(notes.Find(*terms, "0").file, nullptr) << "the oldest go";
    EXPECT_NE(notes.Find(*terms, "39").file, nullptr);
    EXPECT_TRUE(notes.Keep(terms, "a", Note(wire::kLongestNote)));
    EXPECT_TRUE(notes.Keep(terms, "b", Note(wire::kLongestNote)));
    EXPECT_EQ(notes.Find(*terms, "39").file, nullptr) << "no room beside two of the longest";
    EXPECT_NE(notes.Find(*terms, "a").file, nullptr);
    EXPECT_TRUE(notes.Keep(terms, "c", Note(1)));
    EXPECT_EQ(notes.Find(*terms, "a").file, nullptr);
}

} // namespace
} // namespace zelvar
