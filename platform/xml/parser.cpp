// The expat-driven reader of one document. A stack of frames, one per open
// element, says what each element is and collects its text; nothing recurses,
// so nesting depth costs heap, not stack.
#include "platform/xml/parser.hpp"

#include <expat.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <type_traits>

#include "platform/runtime/dds_string.h"
#include "platform/xml/xml_text.hpp"

namespace vexar::xml {
namespace {

enum class FrameKind {
    wrapper,          // the document's <dds>
    plain,            // a plain element: its own object
    extension,        // an extension class's element: its own object
    insideExtension,  // any element inside one: the extension's object
    skipped,          // refused or inside a refused element
};

struct Frame {
    FrameKind kind;
    DDS_XMLObject *object;
    std::string text;  // the element's own text, collected for plain and extension elements
};

// Expat hands over at most an int's worth of bytes at a time.
constexpr std::size_t kChunk = std::size_t{1} << 30;

std::string tagText(const char *tag) { return std::string("<") + tag + ">"; }

class Parser {
public:
    Parser(const std::string &documentName, const ExtensionClasses &classes, DDS_XMLObject &root)
        : expat_(XML_ParserCreate(nullptr)), documentName_(documentName), classes_(classes), root_(root) {
        if (expat_ == nullptr) throw std::bad_alloc();
        XML_SetUserData(expat_, this);
        XML_SetElementHandler(expat_, &Parser::onStart, &Parser::onEnd);
        XML_SetCharacterDataHandler(expat_, &Parser::onText);
    }
    ~Parser() { XML_ParserFree(expat_); }
    Parser(const Parser &) = delete;
    Parser &operator=(const Parser &) = delete;

    ParseResult run(std::string_view text);

    DDS_UnsignedLong currentLine() const noexcept {
        return static_cast<DDS_UnsignedLong>(XML_GetCurrentLineNumber(expat_));
    }
    const std::string &documentName() const noexcept { return documentName_; }
    void addError(std::string message) { result_.errors.push_back({currentLine(), std::move(message)}); }

private:
    static void XMLCALL onStart(void *parser, const XML_Char *tag, const XML_Char **attributes) {
        static_cast<Parser *>(parser)->guarded([&](Parser &self) { self.start(tag, attributes); });
    }
    static void XMLCALL onEnd(void *parser, const XML_Char *tag) {
        static_cast<Parser *>(parser)->guarded([&](Parser &self) { self.end(tag); });
    }
    static void XMLCALL onText(void *parser, const XML_Char *text, int length) {
        static_cast<Parser *>(parser)->guarded([&](Parser &self) { self.addText(std::string_view(text, length)); });
    }

    // No exception may pass through expat: the first one stops the parse and
    // is thrown again once XML_Parse has returned.
    template <typename Step>
    void guarded(Step &&step) noexcept {
        if (pending_) return;  // expat may still deliver events after a stop
        try {
            step(*this);
        } catch (...) {
            pending_ = std::current_exception();
            XML_StopParser(expat_, XML_FALSE);
        }
    }

    void start(const char *tag, const char **attributes);
    void startTop(const char *tag, const char **attributes);
    void startNested(DDS_XMLObject &parent, const char *tag, const char **attributes);
    void startPlain(DDS_XMLObject &parent, const char *tag, const char **attributes);
    void startExtension(DDS_XMLExtensionClass &extensionClass, DDS_XMLObject &parent, const char **attributes);
    void startInsideExtension(DDS_XMLObject &extension, const char *tag, const char **attributes);
    void end(const char *tag);
    void addText(std::string_view text);

    void push(FrameKind kind, DDS_XMLObject *object) { frames_.push_back(Frame{kind, object, {}}); }
    void skip(std::string message) {
        addError(std::move(message));
        push(FrameKind::skipped, nullptr);
    }
    DDS_XMLExtensionClass *classOf(const char *tag) const noexcept;
    const DDS_XMLObject *duplicateOf(const DDS_XMLExtensionClass &extensionClass, const DDS_XMLObject &parent,
                                     const char *name) const noexcept;
    void stamp(DDS_XMLObject &object) const;
    void link(OwnedTree object);
    template <typename Callback>
    auto callClass(const DDS_XMLExtensionClass &extensionClass, const char *tag, Callback &&callback);

    XML_Parser expat_;
    const std::string &documentName_;
    const ExtensionClasses &classes_;
    DDS_XMLObject &root_;
    DDS_XMLContext context_{0, this};
    std::vector<Frame> frames_;
    ParseResult result_;
    std::exception_ptr pending_;
};

// Runs a callback of an extension class with the context's flag cleared. A
// refusal that the callback did not explain with an error of its own gets
// one; new_object refuses by returning null too.
template <typename Callback>
auto Parser::callClass(const DDS_XMLExtensionClass &extensionClass, const char *tag, Callback &&callback) {
    context_.error = 0;
    const std::size_t errorsBefore = result_.errors.size();
    const auto explainRefusal = [&](bool refused) {
        if (refused && result_.errors.size() == errorsBefore)
            addError(tagText(tag) + " refused by the extension class " + tagText(extensionClass.tagName.c_str()));
    };
    if constexpr (std::is_void_v<std::invoke_result_t<Callback>>) {
        callback();
        explainRefusal(context_.error != 0);
    } else {
        auto made = callback();
        explainRefusal(made == nullptr || context_.error != 0);
        return made;
    }
}

ParseResult Parser::run(std::string_view text) {
    XML_Status status;
    do {
        const std::size_t chunk = std::min(text.size(), kChunk);
        const bool last = chunk == text.size();
        status = XML_Parse(expat_, text.data(), static_cast<int>(chunk), last ? XML_TRUE : XML_FALSE);
        text.remove_prefix(chunk);
    } while (status == XML_STATUS_OK && !text.empty());
    if (pending_) std::rethrow_exception(pending_);
    result_.wellFormed = status == XML_STATUS_OK;
    if (!result_.wellFormed) addError(std::string("malformed XML: ") + XML_ErrorString(XML_GetErrorCode(expat_)));
    return std::move(result_);
}

void Parser::start(const char *tag, const char **attributes) {
    if (frames_.empty()) {
        if (std::strcmp(tag, kRootTag) == 0) return push(FrameKind::wrapper, nullptr);
        return startTop(tag, attributes);
    }
    const Frame &parent = frames_.back();
    switch (parent.kind) {
    case FrameKind::wrapper:
        return startTop(tag, attributes);
    case FrameKind::plain:
        return startNested(*parent.object, tag, attributes);
    case FrameKind::extension:
    case FrameKind::insideExtension:
        return startInsideExtension(*parent.object, tag, attributes);
    case FrameKind::skipped:
        return push(FrameKind::skipped, nullptr);
    }
}

void Parser::startTop(const char *tag, const char **attributes) {
    if (DDS_XMLExtensionClass *extensionClass = classOf(tag)) return startExtension(*extensionClass, root_, attributes);
    if (std::strcmp(tag, kQosLibraryTag) == 0) return startPlain(root_, tag, attributes);
    skip("unknown element " + tagText(tag));
}

void Parser::startNested(DDS_XMLObject &parent, const char *tag, const char **attributes) {
    DDS_XMLExtensionClass *extensionClass = classOf(tag);
    if (extensionClass == nullptr) return startPlain(parent, tag, attributes);
    if (extensionClass->isRoot) return skip(tagText(tag) + " may stand only at the top of a document");
    startExtension(*extensionClass, parent, attributes);
}

void Parser::startPlain(DDS_XMLObject &parent, const char *tag, const char **attributes) {
    OwnedTree object = newPlainObject(&parent, tag, attributes);
    stamp(*object);
    DDS_XMLObject *made = object.get();
    link(std::move(object));
    push(FrameKind::plain, made);
}

void Parser::startExtension(DDS_XMLExtensionClass &extensionClass, DDS_XMLObject &parent, const char **attributes) {
    const char *tag = extensionClass.tagName.c_str();
    const char *name = findAttribute(attributes, "name");
    if (!extensionClass.allowDuplicates && name != nullptr) {
        if (const DDS_XMLObject *first = duplicateOf(extensionClass, parent, name)) {
            return skip("duplicate " + tagText(tag) + " named \"" + name + "\" (the first is at " +
                        first->document_name + ":" + std::to_string(first->line_number) + ")");
        }
    }
    DDS_XMLObject *made = callClass(
        extensionClass, tag, [&] { return extensionClass.newObject(&extensionClass, &parent, attributes, &context_); });
    if (made == nullptr) return push(FrameKind::skipped, nullptr);
    OwnedTree object(made);
    // Whatever new_object made, the class that made it deletes it.
    made->extension_class = &extensionClass;
    made->parent = &parent;
    stamp(*made);
    link(std::move(object));
    push(FrameKind::extension, made);
}

void Parser::startInsideExtension(DDS_XMLObject &extension, const char *tag, const char **attributes) {
    const DDS_XMLExtensionClass &extensionClass = *extension.extension_class;
    callClass(extensionClass, tag, [&] { extensionClass.onStartTag(&extension, tag, attributes, &context_); });
    push(FrameKind::insideExtension, &extension);
}

void Parser::end(const char *tag) {
    Frame frame = std::move(frames_.back());
    frames_.pop_back();
    if (frame.kind == FrameKind::plain) {
        const std::string_view text = trimmed(frame.text);
        if (text.empty()) return;
        frame.object->text = DDS_String_dup(std::string(text).c_str());
        if (frame.object->text == nullptr) throw std::bad_alloc();
    } else if (frame.kind == FrameKind::extension || frame.kind == FrameKind::insideExtension) {
        const DDS_XMLExtensionClass &extensionClass = *frame.object->extension_class;
        callClass(extensionClass, tag,
                  [&] { extensionClass.onEndTag(frame.object, tag, frame.text.c_str(), &context_); });
    }
}

void Parser::addText(std::string_view text) {
    if (frames_.empty()) return;
    Frame &frame = frames_.back();
    if (frame.kind == FrameKind::plain || frame.kind == FrameKind::extension ||
        frame.kind == FrameKind::insideExtension)
        frame.text += text;
}

DDS_XMLExtensionClass *Parser::classOf(const char *tag) const noexcept {
    for (DDS_XMLExtensionClass *extensionClass : classes_) {
        if (extensionClass->tagName == tag) return extensionClass;
    }
    return nullptr;
}

const DDS_XMLObject *Parser::duplicateOf(const DDS_XMLExtensionClass &extensionClass, const DDS_XMLObject &parent,
                                         const char *name) const noexcept {
    if (const DDS_XMLObject *loaded = findNamed(parent.first_child, extensionClass, name)) return loaded;
    if (&parent != &root_) return nullptr;
    for (const OwnedTree &staged : result_.staged) {
        if (isNamed(*staged, extensionClass, name)) return staged.get();
    }
    return nullptr;
}

// Where the object was read; an extension class may have named a document itself.
void Parser::stamp(DDS_XMLObject &object) const {
    object.line_number = currentLine();
    if (object.document_name != nullptr) return;
    object.document_name = DDS_String_dup(documentName_.c_str());
    if (object.document_name == nullptr) throw std::bad_alloc();
}

// Top-level objects wait in the result; the others join their parent at once.
void Parser::link(OwnedTree object) {
    DDS_XMLObject &parent = *object->parent;
    if (&parent == &root_) {
        result_.staged.push_back(std::move(object));
    } else {
        appendChild(parent, *object.release());
    }
}

const Parser *parserOf(const DDS_XMLContext &context) noexcept { return static_cast<const Parser *>(context.parser); }

}  // namespace

ParseResult parse(std::string_view text, const std::string &documentName, const ExtensionClasses &classes,
                  DDS_XMLObject &root) {
    Parser parser(documentName, classes, root);
    return parser.run(text);
}

DDS_UnsignedLong currentLine(const DDS_XMLContext &context) noexcept {
    const Parser *parser = parserOf(context);
    return parser != nullptr ? parser->currentLine() : 0;
}

const char *documentName(const DDS_XMLContext &context) noexcept {
    const Parser *parser = parserOf(context);
    return parser != nullptr ? parser->documentName().c_str() : "";
}

void refuse(DDS_XMLContext *context, const char *operation, const std::string &message) {
    if (context != nullptr) context->error = 1;
    if (context == nullptr || context->parser == nullptr) return reportXmlError(operation, "", 0, message);
    static_cast<Parser *>(context->parser)->addError(message);
}

}  // namespace vexar::xml
