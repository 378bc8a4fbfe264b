#include "zelvar/data/reader/NodeMessage.h"

#include <algorithm>
#include <utility>

namespace zelvar {

BDINode NodeFrom(wire::NodeT &&node) {
    BDINode result;
    result.type = node.type;
    result.path = std::move(node.path);
    result.name = std::move(node.name);
    result.value = std::move(node.value);
    result.size = std::max<std::int64_t>(node.size, -1);
    result.modified = node.modified;
    return result;
}

std::unique_ptr<wire::NodeT> ToWire(BDINode const &node) {
    auto result = std::make_unique<wire::NodeT>();
    result->type = node.type;
    result->path = node.path;
    result->name = node.name;
    result->value = node.value;
    result->size = node.size;
    result->modified = node.modified;
    return result;
}

} // namespace zelvar
