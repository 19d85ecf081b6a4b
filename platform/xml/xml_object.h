/* The parsed form of the middleware's XML configuration: a tree of objects,
 * and the extension classes through which other layers take over elements
 * of their own.
 *
 * Every element of a loaded document becomes a DDS_XMLObject. An element
 * whose tag names a registered extension class is handed to that class: the
 * class makes the object (usually a record of its own with the object as its
 * first member), is told of every start and end tag inside the element, and
 * writes the element back when the configuration is saved. Its children are
 * not objects of the tree. Every other element is a plain object that keeps
 * its attributes, its text and its child elements.
 *
 * Documents are loaded into the participant factory, which owns the tree
 * (platform/dds/domain_participant_factory.h). */
#ifndef VEXAR_PLATFORM_XML_XML_OBJECT_H
#define VEXAR_PLATFORM_XML_XML_OBJECT_H

#include "platform/dds_types.h"
#include "platform/export.h"

VEXAR_BEGIN_DECLS

typedef struct DDS_XMLExtensionClass DDS_XMLExtensionClass;
typedef struct DDS_XMLSaveContext DDS_XMLSaveContext;

/* One element of the tree. Plain records so that an extension class can
 * embed it as the first member of its own record; read it through the
 * operations below. */
typedef struct DDS_XMLObject {
    char *tag_name;                    /* owned */
    struct DDS_XMLObject *parent;      /* null at the root */
    struct DDS_XMLObject *first_child; /* plain elements only */
    struct DDS_XMLObject *last_child;
    struct DDS_XMLObject *next_sibling;
    DDS_XMLExtensionClass *extension_class; /* null for a plain element */
    char **attributes;                      /* owned: name, value, ..., null; or null when none */
    char *text;                             /* owned: a plain element's text, white space trimmed; or null */
    char *document_name;                    /* owned: the file (or "<string>") it was read from; or null */
    DDS_UnsignedLong line_number;           /* of its start tag */
} DDS_XMLObject;

/* The state of one parse, handed to the extension class callbacks. */
typedef struct DDS_XMLContext {
    /* A callback sets this to 1 to reject the element: the whole document
     * then fails to load and leaves what was loaded before untouched. */
    DDS_Long error;
    void *parser; /* the parser's own state */
} DDS_XMLContext;

/* The line of the tag being parsed (1 for the first line); 0 for null. */
VEXAR_API DDS_UnsignedLong DDS_XMLContext_get_current_line_number(const DDS_XMLContext *self);
/* The file name (or "<string>") of the document being parsed; "" for null. */
VEXAR_API const char *DDS_XMLContext_get_document_name(const DDS_XMLContext *self);

/* Fills `self` for an element `tag_name` of `extension_class` (null for a
 * plain element) under `parent`, copying the attributes (name, value, ...,
 * null; may be null). The object is not yet linked into `parent`'s children:
 * the parser does that. Returns false, with `self` cleared, when memory runs
 * out or an argument is null. */
VEXAR_API DDS_Boolean DDS_XMLObject_initialize(DDS_XMLObject *self, DDS_XMLExtensionClass *extension_class,
                                               DDS_XMLObject *parent, const char *tag_name, const char **attributes);
/* Frees what initialize copied; leaves children and the record itself alone. */
VEXAR_API void DDS_XMLObject_finalize(DDS_XMLObject *self);

VEXAR_API const char *DDS_XMLObject_get_tag_name(const DDS_XMLObject *self);
VEXAR_API DDS_XMLObject *DDS_XMLObject_get_parent(const DDS_XMLObject *self);
VEXAR_API DDS_XMLObject *DDS_XMLObject_get_first_child(const DDS_XMLObject *self);
VEXAR_API DDS_XMLObject *DDS_XMLObject_get_next_sibling(const DDS_XMLObject *self);
VEXAR_API DDS_XMLExtensionClass *DDS_XMLObject_get_extension_class(const DDS_XMLObject *self);
/* The value of attribute `name`, or null. */
VEXAR_API const char *DDS_XMLObject_get_attribute(const DDS_XMLObject *self, const char *name);
/* A plain element's trimmed text, or null. */
VEXAR_API const char *DDS_XMLObject_get_text(const DDS_XMLObject *self);
VEXAR_API DDS_UnsignedLong DDS_XMLObject_get_line_number(const DDS_XMLObject *self);
VEXAR_API const char *DDS_XMLObject_get_document_name(const DDS_XMLObject *self);

/* ---- extension classes ------------------------------------------------- */

/* Makes the object for an element of the class. `attributes`: name, value,
 * ..., null. Returns the new object (initialized with
 * DDS_XMLObject_initialize for this class), or null to fail the document. */
typedef DDS_XMLObject *(*DDS_XMLExtensionClass_NewObjectFunction)(const DDS_XMLExtensionClass *extension_class,
                                                                  DDS_XMLObject *parent, const char **attributes,
                                                                  DDS_XMLContext *context);
/* Frees an object that new_object made, when the tree is unloaded or the
 * document fails. */
typedef void (*DDS_XMLExtensionClass_DeleteObjectFunction)(DDS_XMLObject *object);
/* A start tag inside the element (the element's own tag is not passed). */
typedef void (*DDS_XMLExtensionClass_OnStartTagFunction)(DDS_XMLObject *object, const char *tag_name,
                                                         const char **attributes, DDS_XMLContext *context);
/* An end tag inside the element, with the text that the element held (white
 * space at both ends kept; "" when it held none). The element's own end tag
 * is passed too, last. */
typedef void (*DDS_XMLExtensionClass_OnEndTagFunction)(DDS_XMLObject *object, const char *tag_name,
                                                       const char *element_text, DDS_XMLContext *context);
/* Writes the object back as XML. */
typedef void (*DDS_XMLExtensionClass_SaveFunction)(const DDS_XMLObject *object, DDS_XMLSaveContext *context);

/* A class for elements named `tag_name`.
 *   is_root: its elements may stand only at the top of a document (as the
 *     document's element or a child of <dds>); otherwise they may also be
 *     nested in plain elements.
 *   allow_duplicates: when false, two elements of the class with the same
 *     "name" attribute under one parent fail the document (elements without
 *     a name are never duplicates).
 * Every callback must be given; `user_data` is the caller's and stays so.
 * Returns null, reported, on a null argument or when memory runs out. */
VEXAR_API DDS_XMLExtensionClass *DDS_XMLExtensionClass_new(const char *tag_name, DDS_Boolean is_root,
                                                           DDS_Boolean allow_duplicates,
                                                           DDS_XMLExtensionClass_OnStartTagFunction on_start_tag,
                                                           DDS_XMLExtensionClass_OnEndTagFunction on_end_tag,
                                                           DDS_XMLExtensionClass_NewObjectFunction new_object,
                                                           DDS_XMLExtensionClass_DeleteObjectFunction delete_object,
                                                           DDS_XMLExtensionClass_SaveFunction save, void *user_data);
/* Deletes the class (not its user data). Unregister it from the factory
 * first, and unload the documents that hold objects of it. Null is ignored. */
VEXAR_API void DDS_XMLExtensionClass_delete(DDS_XMLExtensionClass *self);
VEXAR_API const char *DDS_XMLExtensionClass_get_tag_name(const DDS_XMLExtensionClass *self);
VEXAR_API void *DDS_XMLExtensionClass_get_user_data(const DDS_XMLExtensionClass *self);
VEXAR_API DDS_Boolean DDS_XMLExtensionClass_is_root(const DDS_XMLExtensionClass *self);
VEXAR_API DDS_Boolean DDS_XMLExtensionClass_allows_duplicates(const DDS_XMLExtensionClass *self);

VEXAR_END_DECLS

#endif
