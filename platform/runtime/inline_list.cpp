#include "platform/runtime/inline_list.h"

#include "platform/log/report.h"

namespace {

bool isLinked(const OBLX_InlineListNode *node) noexcept { return node->inlineList != nullptr; }

void unlinkFields(OBLX_InlineListNode *node) noexcept {
    node->inlineList = nullptr;
    node->next = nullptr;
    node->prev = nullptr;
}

// A node can join a list only when it is in none.
bool canAdd(const OBLX_InlineList *list, const OBLX_InlineListNode *node, const char *context) noexcept {
    if (list == nullptr || node == nullptr) {
        OBLX_Report_badParameter(context, list == nullptr ? "list" : "node");
        return false;
    }
    if (isLinked(node)) {
        OBLX_Report_assertionFailure(context, "node is already in a list");
        return false;
    }
    return true;
}

}  // namespace

extern "C" {

void OBLX_InlineList_initialize(OBLX_InlineList *list) {
    if (list == nullptr) {
        OBLX_Report_badParameter("OBLX_InlineList_initialize", "list");
        return;
    }
    unlinkFields(&list->sentinel);
    list->sentinel.inlineList = list;
    list->tail = &list->sentinel;
    list->size = 0;
    list->userData = nullptr;
}

void OBLX_InlineListNode_initialize(OBLX_InlineListNode *node) {
    if (node == nullptr) {
        OBLX_Report_badParameter("OBLX_InlineListNode_initialize", "node");
        return;
    }
    unlinkFields(node);
}

DDS_Boolean OBLX_InlineList_addNodeToBack(OBLX_InlineList *list, OBLX_InlineListNode *node) {
    if (!canAdd(list, node, "OBLX_InlineList_addNodeToBack")) {
        return DDS_BOOLEAN_FALSE;
    }
    node->inlineList = list;
    node->next = nullptr;
    node->prev = list->tail;
    list->tail->next = node;
    list->tail = node;
    ++list->size;
    return DDS_BOOLEAN_TRUE;
}

DDS_Boolean OBLX_InlineList_addNodeToFront(OBLX_InlineList *list, OBLX_InlineListNode *node) {
    if (!canAdd(list, node, "OBLX_InlineList_addNodeToFront")) {
        return DDS_BOOLEAN_FALSE;
    }
    OBLX_InlineListNode *first = list->sentinel.next;
    node->inlineList = list;
    node->next = first;
    node->prev = &list->sentinel;
    if (first != nullptr) {
        first->prev = node;
    } else {
        list->tail = node;
    }
    list->sentinel.next = node;
    ++list->size;
    return DDS_BOOLEAN_TRUE;
}

DDS_Boolean OBLX_InlineList_removeNode(OBLX_InlineList *list, OBLX_InlineListNode *node) {
    constexpr const char *context = "OBLX_InlineList_removeNode";
    if (list == nullptr || node == nullptr) {
        OBLX_Report_badParameter(context, list == nullptr ? "list" : "node");
        return DDS_BOOLEAN_FALSE;
    }
    // The sentinel carries the list too, but is never an element.
    if (node->inlineList != list || node == &list->sentinel) {
        OBLX_Report_assertionFailure(context, "node is not in this list");
        return DDS_BOOLEAN_FALSE;
    }
    node->prev->next = node->next;
    if (node->next != nullptr) {
        node->next->prev = node->prev;
    } else {
        list->tail = node->prev;
    }
    --list->size;
    unlinkFields(node);
    return DDS_BOOLEAN_TRUE;
}

OBLX_InlineListNode *OBLX_InlineList_getFirst(const OBLX_InlineList *list) {
    return list != nullptr ? list->sentinel.next : nullptr;
}

OBLX_InlineListNode *OBLX_InlineList_getLast(const OBLX_InlineList *list) {
    if (list == nullptr || list->tail == &list->sentinel) {
        return nullptr;
    }
    return list->tail;
}

DDS_Long OBLX_InlineList_getSize(const OBLX_InlineList *list) { return list != nullptr ? list->size : 0; }

}  // extern "C"
