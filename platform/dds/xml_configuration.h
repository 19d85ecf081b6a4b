/* The middleware's XML configuration, held by the participant factory:
 * documents loaded from files or strings into one tree, the extension
 * classes that take over elements of their own, and saving it all back.
 *
 * A document is either one element (a registered extension class's, or a
 * qos_library) or a <dds> element holding such elements. Every document
 * loaded adds its elements under one root object, tag "dds". A document
 * with any error (malformed XML, an element that no class and no built-in
 * element knows, a value that a callback or the QoS profiles refuse) is
 * refused whole: every error is reported through the middleware logger as
 * "FILE:LINE: message", the call returns DDS_RETCODE_ERROR, and what was
 * loaded before stays as it was.
 *
 * Errors and objects name a document by its path, or "<string>" for text.
 *
 * The factory serializes these calls with its own lock, which it holds
 * while extension callbacks run: a callback that calls one of them is
 * refused (DDS_RETCODE_ILLEGAL_OPERATION, reported). The tree that
 * get_xml_root returns stays valid until unload_xml. */
#ifndef VEXAR_PLATFORM_DDS_XML_CONFIGURATION_H
#define VEXAR_PLATFORM_DDS_XML_CONFIGURATION_H

#include <stdio.h>

#include "platform/dds/entity.h"
#include "platform/xml/xml_helper.h"
#include "platform/xml/xml_object.h"

VEXAR_BEGIN_DECLS

/* Elements named after the class's tag go to it from now on. A second class
 * with the same tag, or a class for the factory's own "dds" or
 * "qos_library", is refused (DDS_RETCODE_PRECONDITION_NOT_MET). */
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantFactory_register_xml_extension_class(
    DDS_DomainParticipantFactory *self, DDS_XMLExtensionClass *extension_class);
/* Refused (DDS_RETCODE_PRECONDITION_NOT_MET) while loaded documents hold
 * objects of the class: unload first. DDS_RETCODE_BAD_PARAMETER for a class
 * that is not registered. */
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantFactory_unregister_xml_extension_class(
    DDS_DomainParticipantFactory *self, DDS_XMLExtensionClass *extension_class);

VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantFactory_load_xml_file(DDS_DomainParticipantFactory *self,
                                                                      const char *path);
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantFactory_load_xml_string(DDS_DomainParticipantFactory *self,
                                                                        const char *text);
/* The root of everything loaded (tag "dds"), or null when nothing is. */
VEXAR_API DDS_XMLObject *DDS_DomainParticipantFactory_get_xml_root(DDS_DomainParticipantFactory *self);
/* Deletes the loaded tree and the QoS profiles that came with it. */
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantFactory_unload_xml(DDS_DomainParticipantFactory *self);
/* Writes "<dds>", every loaded element (extension elements through their
 * class's save callback), "</dds>"; "<dds/>" when nothing is loaded. The
 * output loads again to the same tree. */
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantFactory_save_xml(DDS_DomainParticipantFactory *self, FILE *out);

VEXAR_END_DECLS

#endif
