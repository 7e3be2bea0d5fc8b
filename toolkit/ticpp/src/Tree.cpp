#include "Tree.h"

namespace ticpp::detail {
namespace {

constexpr std::size_t kChunkSlots = 64;

template <class Handle>
void Bind(Slot& slot, TiXmlBase* base, Tree* tree) {
    // NOLINTNEXTLINE(misc-redundant-expression): it is not one for every Handle.
    static_assert(sizeof(Handle) <= sizeof(slot.storage) && alignof(Handle) <= alignof(Node));
    slot.base = base;
    slot.tree = tree;
    slot.handle = ::new (static_cast<void*>(slot.storage)) Handle(slot);
    base->SetUserData(&slot);
}

void BindNode(Slot& slot, TiXmlNode* node, Tree* tree) {
    switch (node->Type()) {
        case TiXmlNode::TINYXML_DOCUMENT:
            return Bind<Document>(slot, node, tree);
        case TiXmlNode::TINYXML_ELEMENT:
            return Bind<Element>(slot, node, tree);
        case TiXmlNode::TINYXML_COMMENT:
            return Bind<Comment>(slot, node, tree);
        case TiXmlNode::TINYXML_TEXT:
            return Bind<Text>(slot, node, tree);
        case TiXmlNode::TINYXML_DECLARATION:
            return Bind<Declaration>(slot, node, tree);
        default:
            return Bind<Unknown>(slot, node, tree);
    }
}

void ForgetOne(TiXmlBase* base) {
    if (auto* slot = static_cast<Slot*>(base->GetUserData())) slot->base = nullptr;
    base->SetUserData(nullptr);
}

// Frees the slots of a tree whose nodes are gone, all but the first when a handle still needs that.
void End(Tree* tree) noexcept {
    tree->ended = true;
    tree->into = nullptr;
    tree->first.base = nullptr;
    tree->chunks.clear();
    if (tree->pins == 0) delete tree;
}

}  // namespace

Tree::Tree(std::unique_ptr<TiXmlNode> node) {
    BindNode(first, node.release(), this);
}

Tree::Tree(std::unique_ptr<TiXmlAttribute> attribute) {
    Bind<Attribute>(first, attribute.release(), this);
}

Slot* Tree::NewSlot() {
    if (chunks.empty() || used == kChunkSlots) {
        chunks.push_back(std::make_unique_for_overwrite<Slot[]>(kChunkSlots));
        used = 0;
    }
    return &chunks.back()[used++];
}

Tree* RootOf(Tree* tree) {
    while (tree->into) {
        if (tree->into->into) tree->into = tree->into->into;
        tree = tree->into;
    }
    return tree;
}

Slot& SlotOf(TiXmlNode* node, Tree* tree) {
    if (!node->GetUserData()) {
        Tree* root = RootOf(tree);
        BindNode(*root->NewSlot(), node, root);
    }
    return *static_cast<Slot*>(node->GetUserData());
}

Slot& SlotOf(TiXmlAttribute* attribute, Tree* tree) {
    if (!attribute->GetUserData()) {
        Tree* root = RootOf(tree);
        Bind<Attribute>(*root->NewSlot(), attribute, root);
    }
    return *static_cast<Slot*>(attribute->GetUserData());
}

void Hold(Tree* tree) noexcept {
    ++RootOf(tree)->handles;
}

void Unhold(Tree* tree) noexcept {
    Tree* root = RootOf(tree);
    if (--root->handles > 0) return;
    if (auto* node = dynamic_cast<TiXmlNode*>(root->first.base)) DestroyChildren(node);
    delete root->first.base;
    for (Tree* next = root; next;) {
        Tree* ending = next;
        next = next->nextAbsorbed;
        End(ending);
    }
}

void Unpin(Tree* tree) noexcept {
    if (--tree->pins == 0 && tree->ended) delete tree;
}

void Absorb(Tree* tree, Tree* into) {
    tree->into = into;
    into->handles += tree->handles;
    tree->handles = 0;
    into->lastAbsorbed->nextAbsorbed = tree;
    into->lastAbsorbed = tree->lastAbsorbed;
}

void Forget(TiXmlAttribute* attribute) {
    ForgetOne(attribute);
}

void Forget(TiXmlNode* top) {
    TiXmlNode* node = top;
    for (;;) {
        ForgetOne(node);
        if (TiXmlElement* element = node->ToElement()) {
            for (TiXmlAttribute* a = element->FirstAttribute(); a; a = a->Next())
                ForgetOne(a);
        }
        if (node->FirstChild()) {
            node = node->FirstChild();
            continue;
        }
        while (node != top && !node->NextSibling())
            node = node->Parent();
        if (node == top) return;
        node = node->NextSibling();
    }
}

void DestroyChildren(TiXmlNode* top) noexcept {
    TiXmlNode* node = top;
    for (;;) {
        if (TiXmlNode* child = node->LastChild()) {
            node = child;
            continue;
        }
        if (node == top) return;
        TiXmlNode* parent = node->Parent();
        parent->RemoveChild(node);
        node = parent;
    }
}

// TinyXML's own copying recurses, copies the user data and cuts texts at a zero.
std::unique_ptr<TiXmlNode> CopyAlone(const TiXmlNode& node) {
    if (const TiXmlElement* element = node.ToElement()) {
        auto copy = std::make_unique<TiXmlElement>(element->ValueStr());
        for (const TiXmlAttribute* a = element->FirstAttribute(); a; a = a->Next()) {
            copy->SetAttribute(a->NameTStr(), a->ValueStr());
        }
        return copy;
    }
    if (node.ToDocument()) return std::make_unique<TiXmlDocument>(node.ValueStr());
    std::unique_ptr<TiXmlNode> copy(node.Clone());
    copy->SetValue(node.ValueStr());
    copy->SetUserData(nullptr);
    return copy;
}

std::unique_ptr<TiXmlNode> CopyOf(const TiXmlNode& node) {
    std::unique_ptr<TiXmlNode> copy = CopyAlone(node);
    CopyBelow(node, copy.get());
    return copy;
}

void CopyBelow(const TiXmlNode& top, TiXmlNode* to) {
    const TiXmlNode* from = &top;
    for (;;) {
        if (from->FirstChild()) {
            from = from->FirstChild();
        } else {
            while (from != &top && !from->NextSibling()) {
                from = from->Parent();
                to = to->Parent();
            }
            if (from == &top) return;
            from = from->NextSibling();
            to = to->Parent();
        }
        to = to->LinkEndChild(CopyAlone(*from).release());
    }
}

}  // namespace ticpp::detail
