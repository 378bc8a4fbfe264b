#include "zelvar/data/reader/AnswerReading.h"

#include <utility>

namespace zelvar {

std::vector<BDINode> NodesFrom(wire::ChildrenT &&children) {
    std::vector<BDINode> nodes;
    nodes.reserve(children.nodes.size());
    for (std::unique_ptr<wire::NodeT> const &child : children.nodes)
        if (child != nullptr)
            nodes.push_back(NodeFrom(std::move(*child)));
    return nodes;
}

ChannelFacts ChannelFrom(wire::ChannelT const *channel) {
    if (channel == nullptr || channel->sizeX < 0 || channel->sizeY < 0 || RDIGetDTSize(channel->dataType) == 0 ||
        channel->slices < 0 || channel->timeFrames < 0)
        return {};
    return {channel->sizeX, channel->sizeY, channel->dataType, {channel->slices, channel->timeFrames}};
}

} // namespace zelvar
