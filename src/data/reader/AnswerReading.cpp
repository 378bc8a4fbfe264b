#include "zelvar/data/reader/AnswerReading.h"

#include <utility>

namespace zelvar {

BDINode NodeFrom(wire::NodeT &&node) {
    BDINode result;
    result.type = node.type;
    result.path = std::move(node.path);
    result.name = std::move(node.name);
    result.value = std::move(node.value);
    return result;
}

std::unique_ptr<wire::NodeT> ToWire(BDINode const &node) {
    auto result = std::make_unique<wire::NodeT>();
    result->type = node.type;
    result->path = node.path;
    result->name = node.name;
    result->value = node.value;
    return result;
}

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
