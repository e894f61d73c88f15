// The simulated host's object runtime.
//
// On the device Hushwall replaces methods of the apps' own classes. Here the
// apps are simulated, so their classes must be real enough for a replacement
// to run in place of the app's code: classes are registered by name, each
// with a method table keyed by selector, and every message is dispatched
// through those tables, up the superclass chain. A hook installed with
// hookMessage therefore really runs when the simulated app sends the message,
// and can call the app's code through its original-implementation slot.
//
// As on the platform, classes are objects too: a class's own class is its
// meta-class, which holds the class methods, and the meta-class chain ends at
// the root class, so a class also answers the root's instance methods.
// Every object carries a key-value property map, read and written by the
// root class's valueForKey: and setValue:forKey:.
//
// Objects and classes point at their classes without owning them: the runtime
// owns every class and must outlive any message sent to its objects.
#ifndef HUSHWALL_PLATFORM_LINUX_OBJECT_RUNTIME_H_
#define HUSHWALL_PLATFORM_LINUX_OBJECT_RUNTIME_H_

#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "host/object.h"
#include "host/runtime.h"

namespace hushwall::linux_platform {

class ClassObject;
class ObjectRuntime;

// The platform's unrecognised-selector failure, with the platform's text:
// "-[XMPPConnection foo:]: unrecognized selector sent to instance".
class UnrecognizedSelector : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Method {
  host::IMP imp = nullptr;
  std::string types;  // Objective-C type encoding
};

// An instance of a host class.
class HostObject : public host::Object {
 public:
  explicit HostObject(ClassObject* isa) : isa_(isa) {}

  // The object's class; for a class, its meta-class.
  ClassObject* isa() const { return isa_; }

  // The property, or nil.
  host::Value property(std::string_view utf8Key) const;
  void setProperty(std::string_view utf8Key, host::Value value);

  std::map<host::Text, host::Value> properties;

 private:
  friend class ObjectRuntime;
  ClassObject* isa_;
};

// A class or a meta-class.
class ClassObject : public HostObject, public std::enable_shared_from_this<ClassObject> {
 public:
  ClassObject(ObjectRuntime& runtime, std::string name, ClassObject* superclass, bool isMeta)
      : HostObject(nullptr), runtime_(runtime), name_(std::move(name)),
        superclass_(superclass), isMeta_(isMeta) {}

  const std::string& name() const { return name_; }
  ClassObject* superclass() const { return superclass_; }
  bool isMetaClass() const { return isMeta_; }
  ObjectRuntime& runtime() const { return runtime_; }

  // The method this class answers `selector` with, its own or inherited;
  // null when it does not answer it.
  const Method* lookup(const host::Selector& selector) const;

  std::map<host::Selector, Method> methods;  // the class's own table

 private:
  friend class ObjectRuntime;
  ObjectRuntime& runtime_;
  std::string name_;
  ClassObject* superclass_;
  bool isMeta_;
};

class ObjectRuntime : public host::Runtime {
 public:
  // Starts with the root class NSObject, whose instances answer valueForKey:
  // (the property, or nil) and setValue:forKey:.
  ObjectRuntime();
  ObjectRuntime(const ObjectRuntime&) = delete;
  ObjectRuntime& operator=(const ObjectRuntime&) = delete;

  // Registers a class and its meta-class. Throws std::invalid_argument for a
  // name already taken or an unknown superclass.
  host::Value registerClass(const std::string& name, const std::string& superclass = "NSObject");
  // The host's own implementation of a method; a class method goes into the
  // meta-class. Host methods are recorded as taking and returning objects.
  // Throws std::invalid_argument for an unknown class.
  void addHostMethod(const std::string& className, const host::Selector& selector, host::IMP imp,
                     bool classMethod = false);
  // A new instance with the given properties. Throws std::invalid_argument
  // for an unknown class.
  host::Value newObject(const std::string& className, host::Dict properties = {});

  // The object behind a value, or null for anything else. Classes are
  // objects too, with class-wide properties.
  static HostObject* asHostObject(const host::Value& value);
  static ClassObject* asClass(const host::Value& value);
  // The runtime an object or class belongs to; null for anything else.
  static ObjectRuntime* runtimeOf(const host::Value& value);

  // method_getTypeEncoding of the method `cls` answers `selector` with.
  std::optional<std::string> typeEncoding(const host::Value& cls,
                                          const host::Selector& selector) const;

  host::Value getClass(const std::string& name) override;
  host::Value getMetaClass(const host::Value& cls) override;
  void hookMessage(const host::Value& cls, const host::Selector& selector, host::IMP replacement,
                   host::IMP* slot) override;
  bool addMethod(const host::Value& cls, const host::Selector& selector, host::IMP imp,
                 const char* types) override;
  host::Value send(const host::Value& receiver, const host::Selector& selector,
                   const host::Args& args) override;

 private:
  ClassObject& classNamed(const std::string& name) const;

  std::map<std::string, std::shared_ptr<ClassObject>> classes_;
  std::map<std::string, std::shared_ptr<ClassObject>> metaClasses_;
};

}  // namespace hushwall::linux_platform

#endif  // HUSHWALL_PLATFORM_LINUX_OBJECT_RUNTIME_H_
