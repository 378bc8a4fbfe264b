#include "zelvar/reader/RequestHandler.h"

#include "zelvar/data/ReaderDuty.h"
#include "zelvar/reader/AcceptedCertificate.h"
#include "zelvar/reader/TlsGreeting.h"

#include <utility>

namespace zelvar::reader {

namespace {

using Kind = wire::RequestBody;

/// The body of a request that is of this kind, if it is there.
template <class Body>
Body const *As(wire::RequestBodyUnion const &body) {
    return body.type == wire::RequestBodyUnionTraits<Body>::enum_value ? static_cast<Body const *>(body.value)
                                                                       : nullptr;
}

} // namespace

DString const *RequestHandler::FileOf(wire::RequestBodyUnion const &body) {
    auto const url = [](auto const *asked) { return asked != nullptr && asked->tree ? &asked->tree->url : nullptr; };
    auto const moniker = [](auto const *asked) {
        return asked != nullptr && asked->image ? &asked->image->moniker : nullptr;
    };
    auto const table = [](auto const *asked) {
        return asked != nullptr && asked->table ? &asked->table->moniker : nullptr;
    };
    auto const path = [](auto const *asked) { return asked == nullptr ? nullptr : &asked->path; };
    switch (body.type) {
    case Kind::ProbeTrees:
        return path(As<wire::ProbeTreesT>(body));
    case Kind::ProbeImage:
        return path(As<wire::ProbeImageT>(body));
    case Kind::StampFile:
        return path(As<wire::StampFileT>(body));
    case Kind::OpenTree:
        return url(As<wire::OpenTreeT>(body));
    case Kind::FindNode:
        return url(As<wire::FindNodeT>(body));
    case Kind::ListChildren:
        return url(As<wire::ListChildrenT>(body));
    case Kind::OpenImage:
        return moniker(As<wire::OpenImageT>(body));
    case Kind::DescribeChannel:
        return moniker(As<wire::DescribeChannelT>(body));
    case Kind::GetAttribute:
        return moniker(As<wire::GetAttributeT>(body));
    case Kind::ReadPixels:
        return moniker(As<wire::ReadPixelsT>(body));
    case Kind::OpenTable:
        return table(As<wire::OpenTableT>(body));
    case Kind::ReadRows:
        return table(As<wire::ReadRowsT>(body));
    case Kind::CountRows:
        return table(As<wire::CountRowsT>(body));
    case Kind::PickRows:
        return table(As<wire::PickRowsT>(body));
    case Kind::SortRows:
        return table(As<wire::SortRowsT>(body));
    case Kind::DescribeOptions: {
        auto const *const asked = As<wire::DescribeOptionsT>(body);
        return asked == nullptr || asked->moniker.empty() ? nullptr : &asked->moniker;
    }
    default:
        return nullptr;
    }
}

Answer RequestHandler::ReadCertificate() const {
    ReaderDuty const *const duty = OwnDuty();
    DError error;
    error.Set("there is no server");
    std::optional<ShownCertificate> const shown =
        duty == nullptr || !duty->connection ? std::nullopt : GreetServer(*duty->connection, m_stop, error);
    if (!shown)
        return Failure(error);
    wire::CertificateReadT read;
    read.issuer = shown->facts.issuer;
    read.fingerprint = shown->facts.fingerprint;
    read.fault = static_cast<std::uint32_t>(shown->facts.fault);
    return Say(std::move(read));
}

std::optional<Answer> RequestHandler::Handle(wire::RequestBodyUnion const &body, std::unique_ptr<FileDescriptor> file) {
    if (body.value == nullptr)
        return Failure(kIncomplete);
    bool const usesMemory = body.type == Kind::ReadPixels || body.type == Kind::SortRows;
    if (file != nullptr && usesMemory) // in place of the former memory, even if it is none
        m_images.SetPixels(wire::SharedMemory::Map(file->Release()));
    bool const mayAskServer = FileOf(body) != nullptr || body.type == Kind::ProbeFiles || body.type == Kind::FindOwned;
    if (mayAskServer)
        if (DError const error = AcceptedCertificate::Ensure(m_stop); error.IsSet())
            return Failure(error);
    switch (body.type) {
    case Kind::ReadCertificate:
        return ReadCertificate();
    case Kind::ListDrivers:
        return ProbeRequests::ListDrivers();
    case Kind::ProbeTrees:
        return m_probes.ProbeTrees(*As<wire::ProbeTreesT>(body));
    case Kind::ProbeFiles:
        return m_probes.ProbeFiles(*As<wire::ProbeFilesT>(body));
    case Kind::ProbeImage:
        return ProbeRequests::ProbeImage(*As<wire::ProbeImageT>(body));
    case Kind::FindOwned:
        return m_probes.FindOwned(*As<wire::FindOwnedT>(body));
    case Kind::DescribeOptions:
        return ProbeRequests::DescribeOptions(*As<wire::DescribeOptionsT>(body));
    case Kind::StampFile:
        return ProbeRequests::StampFile(*As<wire::StampFileT>(body));
    case Kind::OpenTree:
        return m_trees.Open(*As<wire::OpenTreeT>(body));
    case Kind::FindNode:
        return m_trees.FindNode(*As<wire::FindNodeT>(body));
    case Kind::ListChildren:
        return m_trees.ListChildren(*As<wire::ListChildrenT>(body));
    case Kind::CloseTree:
        m_trees.Close(*As<wire::CloseTreeT>(body));
        return std::nullopt;
    case Kind::CloseWalk:
        m_trees.CloseWalk(*As<wire::CloseWalkT>(body));
        return std::nullopt;
    case Kind::OpenImage:
        return m_images.Open(*As<wire::OpenImageT>(body));
    case Kind::DescribeChannel:
        return m_images.DescribeChannel(*As<wire::DescribeChannelT>(body));
    case Kind::GetAttribute:
        return m_images.GetAttribute(*As<wire::GetAttributeT>(body));
    case Kind::ReadPixels:
        return m_images.ReadPixels(*As<wire::ReadPixelsT>(body));
    case Kind::CloseImage:
        m_images.Close(*As<wire::CloseImageT>(body));
        return std::nullopt;
    case Kind::OpenTable:
        return m_tables.Open(*As<wire::OpenTableT>(body));
    case Kind::ReadRows:
        return m_tables.ReadRows(*As<wire::ReadRowsT>(body));
    case Kind::CountRows:
        return m_tables.CountRows(*As<wire::CountRowsT>(body));
    case Kind::PickRows:
        return m_tables.PickRows(*As<wire::PickRowsT>(body));
    case Kind::SortRows:
        return m_tables.SortRows(*As<wire::SortRowsT>(body), m_images.Pixels());
    case Kind::CloseTable:
        m_tables.Close(*As<wire::CloseTableT>(body));
        return std::nullopt;
    default:
        return Failure("a request of an unknown kind");
    }
}

} // namespace zelvar::reader
