#pragma once

#include "zelvar/data/wire/MessageChannel.h"

#include <memory>
#include <span>
#include <utility>

#include <Messages_generated.h>

namespace zelvar::wire {

/// The bytes of a request or an answer.
template <class Message>
[[nodiscard]] MessageChannel::Bytes Pack(Message const &message) {
    flatbuffers::FlatBufferBuilder builder(1024);
    using Table = typename Message::TableType;
    builder.Finish(Table::Pack(builder, &message));
    return {builder.GetBufferPointer(), builder.GetBufferPointer() + builder.GetSize()};
}

/// What the bytes say; null if they are no such message. Tables inside that the sender left out are null, and a body of
/// an unknown kind is none: who reads looks.
template <class Table>
[[nodiscard]] std::unique_ptr<typename Table::NativeTableType> Unpack(std::span<std::uint8_t const> bytes) {
    constexpr flatbuffers::uoffset_t kDeepest = 16;
    constexpr flatbuffers::uoffset_t kMostTables = 4'000'000;
    flatbuffers::Verifier verifier(bytes.data(), bytes.size(), kDeepest, kMostTables);
    if (!verifier.VerifyBuffer<Table>(nullptr))
        return nullptr;
    return std::unique_ptr<typename Table::NativeTableType>(flatbuffers::GetRoot<Table>(bytes.data())->UnPack());
}

/// A request around its body.
template <class Body>
[[nodiscard]] MessageChannel::Bytes PackRequest(std::uint64_t number, std::uint64_t memory, Body body) {
    RequestT request;
    request.number = number;
    request.memory = memory;
    request.body.Set(std::move(body));
    return Pack(request);
}

} // namespace zelvar::wire
