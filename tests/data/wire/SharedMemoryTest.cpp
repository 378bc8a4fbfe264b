#include "zelvar/data/wire/SharedMemory.h"

#include "support/Test.h"

#include <fcntl.h>
#include <sys/mman.h>

namespace zelvar::wire {
namespace {

TEST(SharedMemory, BothSidesSeeTheSameZerosAndTheSameChanges) {
    auto const here = SharedMemory::Create(10'000);
    ASSERT_NE(here, nullptr);
    auto const there = SharedMemory::Map(dup(here->File()));
    ASSERT_NE(there, nullptr);
    EXPECT_EQ(there->Size(), 10'000U);
    EXPECT_EQ(static_cast<char const *>(there->Data())[9'999], 0);
    std::memset(here->Data(), 7, 10'000);
    EXPECT_EQ(static_cast<char const *>(there->Data())[9'999], 7);
}

TEST(SharedMemory, NobodyCanTakeItFromUnderTheOther) {
    auto const memory = SharedMemory::Create(10'000);
    ASSERT_NE(memory, nullptr);
    EXPECT_NE(ftruncate(memory->File(), 0), 0);
    EXPECT_NE(ftruncate(memory->File(), 20'000), 0);
}

TEST(SharedMemory, OnlyMemoryOfASealedSizeIsMapped) {
    auto const memory = [](off_t size, int seals) {
        int const file = memfd_create("test", MFD_CLOEXEC | MFD_ALLOW_SEALING);
        EXPECT_EQ(ftruncate(file, size), 0);
        EXPECT_EQ(fcntl(file, F_ADD_SEALS, seals), 0);
        return file;
    };
    EXPECT_NE(SharedMemory::Map(memory(100, F_SEAL_SHRINK | F_SEAL_GROW)), nullptr);
    EXPECT_EQ(SharedMemory::Map(memory(100, 0)), nullptr);
    EXPECT_EQ(SharedMemory::Map(memory(100, F_SEAL_GROW)), nullptr) << "it may shrink";
    EXPECT_EQ(SharedMemory::Map(memory(100, F_SEAL_SHRINK)), nullptr) << "it may grow";
    EXPECT_EQ(SharedMemory::Map(memory(0, F_SEAL_SHRINK | F_SEAL_GROW)), nullptr);
    EXPECT_EQ(SharedMemory::Map(memory(100, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE)), nullptr) << "not writable";
    EXPECT_EQ(SharedMemory::Map(open("/dev/zero", O_RDWR | O_CLOEXEC)), nullptr);
    EXPECT_EQ(SharedMemory::Map(-1), nullptr);
}

TEST(SharedMemory, WhatIsNotMappedIsClosed) {
    int const file = open("/dev/null", O_RDWR | O_CLOEXEC);
    EXPECT_EQ(SharedMemory::Map(file), nullptr);
    EXPECT_LT(fcntl(file, F_GETFD), 0);
}

} // namespace
} // namespace zelvar::wire
