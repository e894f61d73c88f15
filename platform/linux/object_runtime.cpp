#include "platform/linux/object_runtime.h"

#include <algorithm>

namespace hushwall::linux_platform {
namespace {

using host::Args;
using host::Selector;
using host::Value;

const char kRootClass[] = "NSObject";

Value valueForKey(const Value& self, const Selector&, const Args& args) {
  HostObject* object = ObjectRuntime::asHostObject(self);
  const host::OptText key = args.at(0).text();
  if (object == nullptr || !key) return Value();
  auto it = object->properties.find(*key);
  return it == object->properties.end() ? Value() : it->second;
}

Value setValueForKey(const Value& self, const Selector&, const Args& args) {
  HostObject* object = ObjectRuntime::asHostObject(self);
  const host::OptText key = args.at(1).text();
  if (object != nullptr && key) object->properties[*key] = args.at(0);
  return Value();
}

// The class name the platform would print for a receiver that is a plain value.
std::string valueClassName(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::kBoolean:
    case Value::Kind::kInteger:
    case Value::Kind::kReal: return "NSNumber";
    case Value::Kind::kString: return "NSString";
    case Value::Kind::kDate: return "NSDate";
    case Value::Kind::kData: return "NSData";
    case Value::Kind::kArray: return "NSArray";
    case Value::Kind::kDictionary: return "NSDictionary";
    case Value::Kind::kBlock: return "NSBlock";
    default: return "NSObject";
  }
}

// Host methods take and return objects: "@@:" and one "@" per argument.
std::string objectTypes(const Selector& selector) {
  return "@@:" + std::string(std::count(selector.begin(), selector.end(), ':'), '@');
}

}  // namespace

Value HostObject::property(std::string_view utf8Key) const {
  auto it = properties.find(host::fromUtf8(utf8Key));
  return it == properties.end() ? Value() : it->second;
}

void HostObject::setProperty(std::string_view utf8Key, Value value) {
  properties[host::fromUtf8(utf8Key)] = std::move(value);
}

const Method* ClassObject::lookup(const Selector& selector) const {
  for (const ClassObject* cls = this; cls != nullptr; cls = cls->superclass()) {
    auto it = cls->methods.find(selector);
    if (it != cls->methods.end()) return &it->second;
  }
  return nullptr;
}

ObjectRuntime::ObjectRuntime() {
  registerClass(kRootClass, "");
  addHostMethod(kRootClass, "valueForKey:", valueForKey);
  addHostMethod(kRootClass, "setValue:forKey:", setValueForKey);
}

Value ObjectRuntime::registerClass(const std::string& name, const std::string& superclass) {
  if (name.empty() || classes_.count(name) != 0) {
    throw std::invalid_argument("class '" + name + "' cannot be registered again");
  }
  ClassObject* super = superclass.empty() ? nullptr : &classNamed(superclass);
  // The root meta-class inherits from the root class, so classes answer the
  // root's instance methods too; every meta-class is itself of the root
  // meta-class.
  ClassObject* superMeta = super ? super->isa() : nullptr;
  auto meta = std::make_shared<ClassObject>(*this, name, superMeta, true);
  auto cls = std::make_shared<ClassObject>(*this, name, super, false);
  cls->isa_ = meta.get();
  if (super == nullptr) {
    meta->superclass_ = cls.get();
    meta->isa_ = meta.get();
  } else {
    meta->isa_ = super->isa()->isa();
  }
  metaClasses_[name] = meta;
  classes_[name] = cls;
  return Value::object(cls);
}

void ObjectRuntime::addHostMethod(const std::string& className, const Selector& selector,
                                  host::IMP imp, bool classMethod) {
  ClassObject& cls = classNamed(className);
  ClassObject& target = classMethod ? *cls.isa() : cls;
  target.methods[selector] = Method{imp, objectTypes(selector)};
}

Value ObjectRuntime::newObject(const std::string& className, host::Dict properties) {
  auto object = std::make_shared<HostObject>(&classNamed(className));
  object->properties = std::move(properties);
  return Value::object(object);
}

HostObject* ObjectRuntime::asHostObject(const Value& value) {
  return dynamic_cast<HostObject*>(value.object());
}

ClassObject* ObjectRuntime::asClass(const Value& value) {
  return dynamic_cast<ClassObject*>(value.object());
}

ObjectRuntime* ObjectRuntime::runtimeOf(const Value& value) {
  HostObject* object = asHostObject(value);
  return object ? &object->isa()->runtime() : nullptr;
}

std::optional<std::string> ObjectRuntime::typeEncoding(const Value& cls,
                                                       const Selector& selector) const {
  ClassObject* c = asClass(cls);
  const Method* method = c ? c->lookup(selector) : nullptr;
  if (method == nullptr) return std::nullopt;
  return method->types;
}

Value ObjectRuntime::getClass(const std::string& name) {
  auto it = classes_.find(name);
  return it == classes_.end() ? Value() : Value::object(it->second);
}

Value ObjectRuntime::getMetaClass(const Value& cls) {
  ClassObject* c = asClass(cls);
  return c ? Value::object(c->isa()->shared_from_this()) : Value();
}

void ObjectRuntime::hookMessage(const Value& cls, const Selector& selector, host::IMP replacement,
                                host::IMP* slot) {
  ClassObject* c = asClass(cls);
  const Method* previous = c ? c->lookup(selector) : nullptr;
  if (previous == nullptr) return;
  // Copy before writing: the previous method may be this very table entry.
  Method installed{replacement, previous->types};
  host::IMP original = previous->imp;
  c->methods[selector] = installed;
  if (slot != nullptr) *slot = original;
}

bool ObjectRuntime::addMethod(const Value& cls, const Selector& selector, host::IMP imp,
                              const char* types) {
  ClassObject* c = asClass(cls);
  if (c == nullptr || c->methods.count(selector) != 0) return false;
  c->methods[selector] = Method{imp, types ? types : ""};
  return true;
}

Value ObjectRuntime::send(const Value& receiver, const Selector& selector, const Args& args) {
  if (receiver.isNil()) return Value();
  HostObject* object = asHostObject(receiver);
  if (object == nullptr) {
    throw UnrecognizedSelector("-[" + valueClassName(receiver) + " " + selector +
                               "]: unrecognized selector sent to instance");
  }
  const Method* method = object->isa()->lookup(selector);
  if (method == nullptr) {
    const bool isClass = dynamic_cast<ClassObject*>(object) != nullptr;
    throw UnrecognizedSelector(std::string(isClass ? "+[" : "-[") + object->isa()->name() + " " +
                               selector + "]: unrecognized selector sent to " +
                               (isClass ? "class" : "instance"));
  }
  return method->imp(receiver, selector, args);
}

ClassObject& ObjectRuntime::classNamed(const std::string& name) const {
  auto it = classes_.find(name);
  if (it == classes_.end()) throw std::invalid_argument("no host class '" + name + "'");
  return *it->second;
}

}  // namespace hushwall::linux_platform
