/* An intrusive doubly linked list: records embed an OBLX_InlineListNode
 * and are linked without any allocation. A sentinel node stands before the
 * first element, so every linked node has a predecessor. The list refers to
 * its own sentinel: do not copy an initialized list. Not synchronized. */
#ifndef VEXAR_PLATFORM_INLINE_LIST_H
#define VEXAR_PLATFORM_INLINE_LIST_H

#include "platform/dds_types.h"

VEXAR_BEGIN_DECLS

struct OBLX_InlineList;

typedef struct OBLX_InlineListNode {
    struct OBLX_InlineList *inlineList; /* the list holding the node, null when unlinked */
    struct OBLX_InlineListNode *next;   /* null at the back */
    struct OBLX_InlineListNode *prev;   /* the sentinel at the front */
} OBLX_InlineListNode;

typedef struct OBLX_InlineList {
    OBLX_InlineListNode sentinel; /* sentinel.next is the first node */
    OBLX_InlineListNode *tail;    /* the last node, or the sentinel when empty */
    DDS_Long size;
    void *userData; /* free for the list's owner */
} OBLX_InlineList;

/* An empty list with null user data. */
VEXAR_API void OBLX_InlineList_initialize(OBLX_InlineList *list);
/* An unlinked node. */
VEXAR_API void OBLX_InlineListNode_initialize(OBLX_InlineListNode *node);
/* Both link an unlinked node; a node already in a list is refused (false). */
VEXAR_API DDS_Boolean OBLX_InlineList_addNodeToBack(OBLX_InlineList *list, OBLX_InlineListNode *node);
VEXAR_API DDS_Boolean OBLX_InlineList_addNodeToFront(OBLX_InlineList *list, OBLX_InlineListNode *node);
/* Unlinks `node`; false when it is not in `list`. */
VEXAR_API DDS_Boolean OBLX_InlineList_removeNode(OBLX_InlineList *list, OBLX_InlineListNode *node);
/* Null when the list is empty. */
VEXAR_API OBLX_InlineListNode *OBLX_InlineList_getFirst(const OBLX_InlineList *list);
VEXAR_API OBLX_InlineListNode *OBLX_InlineList_getLast(const OBLX_InlineList *list);
VEXAR_API DDS_Long OBLX_InlineList_getSize(const OBLX_InlineList *list);

VEXAR_END_DECLS

#endif
