// Compiling a type code into an encoding plan.
#include <algorithm>
#include <cstdint>
#include <new>

#include "platform/cdr/encoding.hpp"

namespace vexar::cdr {
namespace {

class PlanCompiler {
public:
    PlanCompiler(std::vector<Step> &steps, const PlanOptions &options) noexcept : steps_(steps), options_(options) {}

    // Appends the steps of a value of `type` at `offset`; false for what
    // the encoding cannot carry.
    bool value(const DDS_TypeCode &type, std::size_t offset, bool kept) {
        if (DDS_UnsignedLong size = primitiveSize(type)) {
            Step step{kindOf(type) == DDS_TK_ENUM ? StepKind::enumeration : StepKind::primitive};
            step.size = static_cast<std::uint8_t>(size);
            step.type = &type;
            if (step.kind == StepKind::enumeration) describeValues(step, type);
            return size == 4 ? pushWord(step, offset, kept) : push(step, offset, kept);
        }
        switch (kindOf(type)) {
        case DDS_TK_STRING: {
            Step step{StepKind::string};
            step.bound = type.length + 1;
            return push(step, offset, kept);
        }
        case DDS_TK_ARRAY:
            for (DDS_UnsignedLong i = 0; i < type.dimension; ++i) {
                if (!value(*type.content_type, offset + i * type.content_type->sample_size, kept)) return false;
            }
            return true;
        case DDS_TK_SEQUENCE:
            return sequence(type, offset, kept);
        case DDS_TK_STRUCT:
            return isMutable(type) ? list(type, offset, kept) : structPlain(type, offset, kept);
        case DDS_TK_UNION:
            return isMutable(type) && list(type, offset, kept);
        default:
            return false;
        }
    }

private:
    static constexpr std::size_t kNoRun = SIZE_MAX;

    bool push(Step step, std::size_t offset, bool kept) {
        step.offset = offset;
        step.kept = kept;
        steps_.push_back(step);
        wordRun_ = kNoRun;
        return true;
    }

    // 4-byte values that follow each other in the sample follow each other
    // on the wire too: one `words` step moves them all, its children say
    // what each one is.
    bool pushWord(Step step, std::size_t offset, bool kept) {
        bool extendsRun = wordRun_ != kNoRun && steps_[wordRun_].kept == kept && steps_.back().offset + 4 == offset;
        if (!extendsRun) {
            Step words{StepKind::words};
            push(words, offset, kept);
            wordRun_ = steps_.size() - 1;
        }
        step.offset = offset;
        step.kept = kept;
        steps_.push_back(step);
        steps_[wordRun_].bound += 1;
        steps_[wordRun_].end = static_cast<std::uint32_t>(steps_.size());
        return true;
    }

    static void describeValues(Step &step, const DDS_TypeCode &enumeration) noexcept {
        if (enumeration.member_count == 0) return;
        step.low = step.high = enumeration.members[0].label;
        for (DDS_UnsignedLong i = 1; i < enumeration.member_count; ++i) {
            step.low = std::min(step.low, enumeration.members[i].label);
            step.high = std::max(step.high, enumeration.members[i].label);
        }
        // Distinct values filling the range: a range check says it all.
        step.dense = static_cast<std::int64_t>(step.high) - step.low + 1 == enumeration.member_count;
    }

    // A step whose block holds the steps appended by `contents`.
    template <typename Contents>
    bool block(Step step, std::size_t offset, bool kept, Contents contents) {
        std::size_t index = steps_.size();
        push(step, offset, kept);
        if (!contents()) return false;
        steps_[index].end = static_cast<std::uint32_t>(steps_.size());
        wordRun_ = kNoRun;
        return true;
    }

    bool inForm(const DDS_TypeCode &type, DDS_UnsignedLong index) const noexcept {
        return !options_.keyForm || isKeyFormMember(type, index);
    }

    bool keptMember(const DDS_TypeCode &type, DDS_UnsignedLong index, bool kept) const noexcept {
        return kept && (!options_.keysOnly || isKeyFormMember(type, index));
    }

    bool structPlain(const DDS_TypeCode &type, std::size_t offset, bool kept) {
        for (DDS_UnsignedLong i = 0; i < type.member_count; ++i) {
            const DDS_TypeCodeMember &m = type.members[i];
            if (inForm(type, i) && !value(*m.type, offset + m.offset, keptMember(type, i, kept))) return false;
        }
        return true;
    }

    // Element steps are relative to the element.
    bool sequence(const DDS_TypeCode &type, std::size_t offset, bool kept) {
        Step step{StepKind::sequence};
        step.bound = type.length;
        step.type = &type;
        return type.sequence_ops != nullptr &&
               block(step, offset, kept, [&] { return value(*type.content_type, 0, kept); });
    }

    bool member(Step step, const DDS_TypeCode &type, std::size_t offset, bool kept) {
        step.kind = StepKind::member;
        step.extendedHeader = options_.extendedHeaders && !isPrimitive(type);
        std::size_t index = steps_.size();
        if (!block(step, offset, kept, [&] { return value(type, offset, kept); })) return false;
        const Step &contents = steps_[index + 1];
        if (contents.kind == StepKind::words && contents.end == steps_[index].end)
            steps_[index].bound = contents.bound * 4;  // a length known before the member is written
        return true;
    }

    // A struct's members in order; a union's discriminator (id 0) and branches.
    bool list(const DDS_TypeCode &type, std::size_t offset, bool kept) {
        Step step{StepKind::list};
        step.isUnion = kindOf(type) == DDS_TK_UNION;
        step.type = &type;
        return block(step, offset, kept, [&] {
            if (step.isUnion && !member(Step{}, *type.discriminator_type, offset, kept)) return false;
            for (DDS_UnsignedLong i = 0; i < type.member_count; ++i) {
                const DDS_TypeCodeMember &m = type.members[i];
                if (!inForm(type, i)) continue;
                Step entry{};
                entry.id = static_cast<DDS_UnsignedLong>(m.id);
                entry.label = m.label;
                entry.isDefault = step.isUnion && type.default_index == static_cast<DDS_Long>(i);
                if (!member(entry, *m.type, offset + m.offset, keptMember(type, i, kept))) return false;
            }
            return true;
        });
    }

    std::vector<Step> &steps_;
    const PlanOptions &options_;
    std::size_t wordRun_ = kNoRun;  // the open `words` step, if any
};

// The initial value of every value the steps hold: numbers 0, enumerations
// their first value, strings empty, sequences empty, a union's discriminator
// its default (its branches too are reset).
class ResetCompiler {
public:
    explicit ResetCompiler(std::vector<ResetStep> &resets) noexcept : resets_(resets) {}

    void compile(const std::vector<Step> &steps) {
        for (std::size_t i = 0; i < steps.size();) {
            const Step &step = steps[i];
            std::size_t next = i + 1;
            switch (step.kind) {
            case StepKind::primitive:
                zeros(step.offset, step.size);
                break;
            case StepKind::enumeration:
                word(step.offset, firstValue(*step.type));
                break;
            case StepKind::string:
                resets_.push_back({ResetStep::Kind::string, step.offset});
                break;
            case StepKind::sequence:
                resets_.push_back({ResetStep::Kind::sequence, step.offset, 0, 0, step.type});
                next = step.end;  // its element steps belong to the elements
                break;
            case StepKind::list:
                if (step.isUnion) {
                    word(step.offset, DDS_TypeCode_default_discriminator(step.type));
                    next = steps[i + 1].end;  // past the discriminator's own member
                }
                break;
            case StepKind::words:
            case StepKind::member:
                break;  // what they hold follows
            }
            i = next;
        }
    }

private:
    static DDS_Long firstValue(const DDS_TypeCode &enumeration) noexcept {
        return enumeration.member_count > 0 ? enumeration.members[0].label : 0;
    }

    void zeros(std::size_t offset, std::size_t size) {
        ResetStep *last = resets_.empty() ? nullptr : &resets_.back();
        if (last != nullptr && last->kind == ResetStep::Kind::zeros && last->offset + last->size == offset)
            last->size += size;
        else resets_.push_back({ResetStep::Kind::zeros, offset, size});
    }

    void word(std::size_t offset, DDS_Long value) {
        if (value == 0) zeros(offset, sizeof value);
        else resets_.push_back({ResetStep::Kind::word, offset, 0, value});
    }

    std::vector<ResetStep> &resets_;
};

// Gathers each `words` step's enumerations into its range of checks.
void listEnumChecks(std::vector<Step> &steps, std::vector<EnumCheck> &checks) {
    for (std::uint32_t i = 0; i < steps.size(); ++i) {
        Step &run = steps[i];
        if (run.kind != StepKind::words) continue;
        run.checks = static_cast<std::uint32_t>(checks.size());
        for (std::uint32_t j = i + 1; j < run.end; ++j) {
            const Step &word = steps[j];
            if (word.kind != StepKind::enumeration) continue;
            checks.push_back({(j - i - 1) * 4, word.low, word.high, word.dense ? nullptr : word.type});
        }
        run.checksEnd = static_cast<std::uint32_t>(checks.size());
    }
}

// Flattens the steps for writing: see WriteOp.
class WriteCompiler {
public:
    WriteCompiler(const std::vector<Step> &steps, std::vector<WriteOp> &ops) noexcept : steps_(steps), ops_(ops) {}

    // Appends the ops of the steps [begin, end) at nesting `depth`; false
    // when lists nest deeper than the encoder keeps.
    bool range(std::uint32_t begin, std::uint32_t end, std::size_t depth) {
        for (std::uint32_t i = begin; i < end; i = steps_[i].end != 0 ? steps_[i].end : i + 1) {
            if (!step(i, depth)) return false;
        }
        return true;
    }

    bool hasLists() const noexcept { return hasLists_; }

private:
    WriteOp &emit(WriteKind kind, const Step &step) {
        WriteOp op{kind};
        op.offset = step.offset;
        ops_.push_back(op);
        return ops_.back();
    }

    std::uint32_t next() const noexcept { return static_cast<std::uint32_t>(ops_.size()); }

    bool step(std::uint32_t index, std::size_t depth) {
        const Step &step = steps_[index];
        switch (step.kind) {
        case StepKind::words:
            emit(WriteKind::words, step).count = step.bound;
            return true;
        case StepKind::primitive:
        case StepKind::enumeration:
            emit(WriteKind::primitive, step).size = step.size;
            return true;
        case StepKind::string:
            emit(WriteKind::string, step).count = step.bound;
            return true;
        case StepKind::sequence: {
            std::uint32_t at = next();
            WriteOp &op = emit(WriteKind::sequence, step);
            op.count = step.bound;
            op.type = step.type;
            if (!range(index + 1, step.end, 0)) return false;  // each element runs as a range of its own
            ops_[at].end = next();
            return true;
        }
        case StepKind::list:
            return list(index, depth);
        case StepKind::member:
            return false;  // only inside a list
        }
        return false;
    }

    bool list(std::uint32_t index, std::size_t depth) {
        if (depth + 1 >= kMaxWriteNesting) return false;  // the list's slot and its members'
        const Step &list = steps_[index];
        hasLists_ = true;
        emit(WriteKind::openList, list).slot = static_cast<std::uint8_t>(depth);
        std::uint32_t first = index + 1;
        if (list.isUnion) {
            if (!member(first, depth + 1)) return false;
            std::uint32_t select = next();
            emit(WriteKind::select, list);  // the discriminator lies at the union's offset
            for (std::uint32_t i = steps_[first].end; i < list.end; i = steps_[i].end) {
                std::uint32_t at = next();
                WriteOp &branch = emit(WriteKind::branch, steps_[i]);
                branch.label = steps_[i].label;
                branch.isDefault = steps_[i].isDefault;
                if (!member(i, 0)) return false;  // a chosen branch runs as a range of its own
                ops_[at].end = next();
            }
            ops_[select].end = next();
        } else {
            for (std::uint32_t i = first; i < list.end; i = steps_[i].end) {
                if (!member(i, depth + 1)) return false;
            }
        }
        emit(WriteKind::closeList, list).slot = static_cast<std::uint8_t>(depth);
        return true;
    }

    bool member(std::uint32_t index, std::size_t depth) {
        const Step &member = steps_[index];
        if (member.bound != 0 && !member.extendedHeader) {  // one words step of known length
            const Step &words = steps_[index + 1];
            WriteOp &op = emit(WriteKind::fixedMember, words);
            op.id = member.id;
            op.count = words.bound;
            return true;
        }
        if (!member.extendedHeader && member.end == index + 2 && steps_[index + 1].kind == StepKind::string) {
            const Step &string = steps_[index + 1];
            WriteOp &op = emit(WriteKind::stringMember, string);
            op.id = member.id;
            op.count = string.bound;
            return true;
        }
        WriteOp &open = emit(WriteKind::openMember, member);
        open.id = member.id;
        open.extendedHeader = member.extendedHeader;
        open.slot = static_cast<std::uint8_t>(depth);
        if (!range(index + 1, member.end, depth + 1)) return false;
        emit(WriteKind::closeMember, member).slot = static_cast<std::uint8_t>(depth);
        return true;
    }

    const std::vector<Step> &steps_;
    std::vector<WriteOp> &ops_;
    bool hasLists_ = false;
};

}  // namespace

Plan::Plan(const DDS_TypeCode &type, const PlanOptions &options) noexcept {
    try {
        valid_ = PlanCompiler(steps_, options).value(type, 0, true);
        if (valid_) ResetCompiler(resetSteps_).compile(steps_);
        if (valid_) listEnumChecks(steps_, enumChecks_);
        if (valid_) {
            WriteCompiler writes(steps_, writeOps_);
            valid_ = writes.range(0, static_cast<std::uint32_t>(steps_.size()), 0);
            hasLists_ = writes.hasLists();
        }
    } catch (const std::bad_alloc &) {
        valid_ = false;
    }
}

}  // namespace vexar::cdr
