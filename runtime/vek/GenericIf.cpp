#include "runtime/vek/GenericIf.h"

#include <string>

#include "runtime/vek/Exception.h"

namespace Vek {

namespace {

[[noreturn]] void throwWithId(ExceptionId id, String const& message) {
  Exception::IdBitArray ids;
  ids.add(id);
  throw Exception{message, ids};
}

String named(std::string_view name) {
  return String{name};
}

}  // namespace

void throwConstException() {
  throwWithId(kConstException, "attempting to modify a const instance");
}

void throwOpNotSupportedException(std::string_view name, unsigned opId, bool indexed) {
  throwWithId(kOpNotSupportedException,
              format("operation %u is not supported on %sattribute %s", opId,
                     indexed ? "a member of " : "", named(name).charPtr()));
}

void throwBadIndexAttrException(std::string_view name) {
  throwWithId(kBadIndexAttrException, format("attribute %s has no index", named(name).charPtr()));
}

void throwUnknownArgException(std::string_view what) {
  throwWithId(kUnknownArgException, format("unknown argument %s", named(what).charPtr()));
}

Value valueOfText(std::string_view text, ValueType const& type) {
  char const* begin = text.data();
  char const* const end = begin + text.size();
  Value value{type, type.fromText(begin, end)};
  if (begin != end) {
    std::string const whole{text};
    throwRangeException(format("junk at column %lld deserializing %s",
                               static_cast<long long>(begin - text.data()) + 1, whole.c_str())
                            .charPtr());
  }
  return value;
}

namespace {

/// Types are compared by name: a pointer to const and one to non-const are one type to tools.
bool isOfType(Value const& value, ValueType const& wanted) {
  return value.type() == &wanted || (!value.empty() && value.type()->name == wanted.name);
}

void clear(Value& result) {
  if (!result.empty()) result = Value{};
}

}  // namespace

VekType const& GenericIf::type() const {
  return *object_->fwkType();
}

AttributeId GenericIf::attributeId(std::string_view name) const {
  VekAttr const* const found = type().attr(name);
  return found == nullptr ? 0 : found->id;
}

std::string_view GenericIf::attributeString(AttributeId id) const {
  VekAttr const* const found = type().attr(id);
  return found == nullptr ? std::string_view{} : found->name;
}

VekAttr const& GenericIf::attr(AttributeId id) const {
  VekAttr const* const found = type().attr(id);
  if (found == nullptr) throwUnknownArgException(std::to_string(id));
  return *found;
}

void GenericIf::refuseIfReadOnly() const {
  if (readOnly_) throwConstException();
}

PtrInterface& GenericIf::writable() const {
  refuseIfReadOnly();
  // The view was made over an object that its maker may change.
  return const_cast<PtrInterface&>(*object_);
}

Value GenericIf::converted(Value const& value, ValueType const& wanted) const {
  if (isOfType(value, wanted)) {
    if (!wanted.object) return value;
    return Value{wanted, value.storage()};
  }
  if (!value.empty() && value.type()->name == ValueTraits<String>::type.name)
    return valueOfText(std::get<String>(value.storage()).view(), wanted);
  throwTypeException(String{type().bareName()}.charPtr());
}

GenericIf::List GenericIf::converted(VekAttr const& attr, Arguments arguments) const {
  if (arguments.size() > attr.parameters.size())
    throwUnknownArgException(arguments[attr.parameters.size()].text());
  if (arguments.size() < attr.parameters.size())
    throwRangeException(format("argument %s of %s is missing",
                               named(attr.parameters[arguments.size()].name).charPtr(),
                               named(attr.name).charPtr())
                            .charPtr());
  List values;
  values.reserve(arguments.size());
  for (std::size_t i = 0; i < arguments.size(); ++i)
    values.push_back(converted(arguments[i], *attr.parameters[i].type));
  return values;
}

Value GenericIf::indexOf(VekAttr const& attr, Value const& index) const {
  if (attr.keyType == nullptr) throwBadIndexAttrException(attr.name);
  return converted(index, *attr.keyType);
}

void GenericIf::attributeOp(Op const& op, Arguments arguments, Value& result) {
  VekAttr const& target = attr(op.attribute);
  bool const takesArguments =
      op.code == OpCode::set || op.code == OpCode::call || op.code == OpCode::instantiate;
  // Refused before anything is looked at: no change whatever goes through a read-only view.
  if (takesArguments || op.code == OpCode::del) refuseIfReadOnly();
  if (!takesArguments && !arguments.empty()) throwUnknownArgException(arguments[0].text());
  if (op.index.empty()) {
    wholeOp(target, op, arguments, result);
  } else {
    memberOp(target, op, arguments, result);
  }
}

void GenericIf::memberOp(VekAttr const& attr, Op const& op, Arguments arguments, Value& result) {
  Value const index = indexOf(attr, op.index);
  if (op.code == OpCode::get && attr.member != nullptr) {
    result = attr.member(*object_, index);
  } else if (op.code == OpCode::set && attr.memberWrite != nullptr) {
    if (arguments.empty()) throwRangeException("a value is missing");
    if (arguments.size() > 1) throwUnknownArgException(arguments[1].text());
    attr.memberWrite(writable(), index, converted(arguments[0], *attr.writeType));
    clear(result);
  } else if (op.code == OpCode::del && attr.memberDel != nullptr) {
    result = attr.memberDel(writable(), index);
  } else {
    throwOpNotSupportedException(attr.name, static_cast<unsigned>(op.code), true);
  }
}

void GenericIf::wholeOp(VekAttr const& attr, Op const& op, Arguments arguments, Value& result) {
  if (op.code == OpCode::get && attr.read != nullptr) {
    result = attr.read(*object_);
  } else if (op.code == OpCode::size && attr.size != nullptr) {
    result = Value{attr.size(*object_)};
  } else if (op.code == OpCode::set && attr.write != nullptr) {
    if (arguments.empty()) throwRangeException("a value is missing");
    if (arguments.size() > 1) throwUnknownArgException(arguments[1].text());
    // What has the type already is handed on as it is.
    if (!attr.writeType->object && isOfType(arguments[0], *attr.writeType))
      attr.write(writable(), arguments[0]);
    else
      attr.write(writable(), converted(arguments[0], *attr.writeType));
    clear(result);
  } else if (op.code == OpCode::call && attr.call != nullptr) {
    List const values = converted(attr, arguments);
    attr.call(writable(), values);
    clear(result);
  } else if (op.code == OpCode::instantiate && attr.instantiate != nullptr) {
    List const values = converted(attr, arguments);
    result = attr.instantiate(writable(), values);
  } else if (op.code == OpCode::del && attr.del != nullptr) {
    result = attr.del(writable());
  } else {
    throwOpNotSupportedException(attr.name, static_cast<unsigned>(op.code), false);
  }
}

std::unique_ptr<AttributeIterator> GenericIf::attributeIteratorConst(AttributeId id) const {
  VekAttr const& walked = attr(id);
  if (walked.iterate == nullptr) throwBadIndexAttrException(walked.name);
  auto walk = walked.iterate(*object_, nullptr);
  walk->readOnlyIs(readOnly_);
  return walk;
}

std::unique_ptr<AttributeIterator> GenericIf::attributeIteratorKeyConst(AttributeId id,
                                                                        Value const& key) const {
  VekAttr const& walked = attr(id);
  if (walked.iterate == nullptr) throwBadIndexAttrException(walked.name);
  Value const index = indexOf(walked, key);
  auto walk = walked.iterate(*object_, &index);
  walk->readOnlyIs(readOnly_);
  return walk;
}

void GenericIf::attributeIterator_iterDel(AttributeIterator& it) const {
  refuseIfReadOnly();
  it.del();
}

void const* GenericIf::voidPtrIs(VekType const& type) const {
  if (&type == &ptrInterfaceType()) return object_.get();
  if (&type == &this->type()) return dynamic_cast<void const*>(object_.get());
  throwTypeException(String{this->type().bareName()}.charPtr());
}

void GenericIf::hasNotificationActiveIs(bool on) {
  writable().hasNotificationActiveIs(on);
}

void GenericIf::vekDoZombieReactors(bool on) {
  if (attributeId("vekDoZombieReactors") == 0) {  // an object without reactors: its mark alone
    writable().vekMarkedForDeletionIs(on);
    return;
  }
  Value none;
  attributeOp({attributeId("vekDoZombieReactors"), OpCode::call, {}}, {Value{on}}, none);
}

std::unique_ptr<GenericIf> GenericIfPtrInterface::clone() const {
  return std::make_unique<GenericIfPtrInterface>(*this);
}

std::unique_ptr<GenericIf> GenericIfEntity::clone() const {
  return std::make_unique<GenericIfEntity>(*this);
}

void const* GenericIfEntity::voidPtrIs(VekType const& type) const {
  if (&type == &entityType()) return static_cast<Entity const*>(object().get());
  return GenericIf::voidPtrIs(type);
}

std::unique_ptr<GenericIf> genericIfOf(Ptr<PtrInterface const> const& object, bool readOnly) {
  if (!object || object->fwkType() == nullptr) throwRangeException("the object has no type record");
  if (auto const* const entity = dynamic_cast<Entity const*>(object.get()))
    return std::make_unique<GenericIfEntity>(Ptr<Entity const>{entity}, readOnly);
  return std::make_unique<GenericIfPtrInterface>(object, readOnly);
}

}  // namespace Vek
