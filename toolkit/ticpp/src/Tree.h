#pragma once

#include <tinyxml.h>

#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "ticpp.h"

namespace ticpp::detail {

// One node or attribute as its handles see it, found again through TinyXML's user data.
struct Slot {
    TiXmlBase* base = nullptr;  // null once removed
    Tree* tree = nullptr;
    Base* handle = nullptr;  // what look-ups return, in storage
    // Every kind of handle has the same size; the right kind is made in place and never destroyed (it holds nothing).
    alignas(Node) std::byte storage[sizeof(Node)];
};

// A tree of nodes with the slots of those that were looked at. Linking a node absorbs its tree into the other; the
// absorbed one then only keeps its slots, so that pointers into it stay valid, and lives as long as the other.
struct Tree {
    explicit Tree(std::unique_ptr<TiXmlNode> node);
    explicit Tree(std::unique_ptr<TiXmlAttribute> attribute);
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    Slot* NewSlot();

    Slot first;            // that of the root
    bool ended = false;    // the nodes are gone, only the first slot is left for those that pin it
    Tree* into = nullptr;  // the tree that absorbed this, not always directly
    Tree* nextAbsorbed = nullptr;
    Tree* lastAbsorbed = this;
    long handles = 0;  // handles that keep the tree alive, those of absorbed trees included
    long pins = 0;     // handles that keep only the first slot
    std::vector<std::unique_ptr<Slot[]>> chunks;
    std::size_t used = 0;  // slots used of the last chunk
};

Tree* RootOf(Tree* tree);
Slot& SlotOf(TiXmlNode* node, Tree* tree);
Slot& SlotOf(TiXmlAttribute* attribute, Tree* tree);

void Hold(Tree* tree) noexcept;
void Unhold(Tree* tree) noexcept;
void Unpin(Tree* tree) noexcept;

// Puts the tree of a node that is about to get a parent under another.
void Absorb(Tree* tree, Tree* into);

// Tells the handles of a node, of its attributes and of all below it that they are gone.
void Forget(TiXmlNode* node);
void Forget(TiXmlAttribute* attribute);
// Deletes all below a node, however deep: TinyXML's destructors recurse.
void DestroyChildren(TiXmlNode* node) noexcept;
// A copy of a node without, or with, all below it.
std::unique_ptr<TiXmlNode> CopyAlone(const TiXmlNode& node);
std::unique_ptr<TiXmlNode> CopyOf(const TiXmlNode& node);
// Adds copies of all below one node to another outside of it.
void CopyBelow(const TiXmlNode& from, TiXmlNode* to);

}  // namespace ticpp::detail
