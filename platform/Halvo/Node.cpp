#include "Halvo/Node.h"

namespace Halvo {

Node::~Node() = default;

void Node::lastUserGone() { delete this; }

Node* Node::publisher() const { return nullptr; }

const Zel::TypeDescriptor* Node::typeData() const { return nullptr; }

}  // namespace Halvo
