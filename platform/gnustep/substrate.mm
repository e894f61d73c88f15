// MSHookMessageEx over the runtime's own method table. Like Substrate, a
// method the class only inherits is added to the class itself with the
// superclass's types, so the superclass and its other subclasses keep their
// implementation; the previous implementation handed back is then the
// inherited one.
#include <substrate.h>

#include <cstdlib>

namespace {

Method ownMethod(Class cls, SEL selector) {
  unsigned int count = 0;
  Method* methods = class_copyMethodList(cls, &count);
  Method found = nullptr;
  for (unsigned int i = 0; i < count && found == nullptr; ++i) {
    if (sel_isEqual(method_getName(methods[i]), selector)) found = methods[i];
  }
  std::free(methods);
  return found;
}

}  // namespace

extern "C" void MSHookMessageEx(Class cls, SEL message, IMP hook, IMP* old) {
  if (cls == Nil || message == nullptr) return;
  Method inherited = class_getInstanceMethod(cls, message);
  if (inherited == nullptr) return;
  if (Method own = ownMethod(cls, message)) {
    IMP previous = method_setImplementation(own, hook);
    if (old != nullptr) *old = previous;
    return;
  }
  IMP previous = method_getImplementation(inherited);
  class_addMethod(cls, message, hook, method_getTypeEncoding(inherited));
  if (old != nullptr) *old = previous;
}
