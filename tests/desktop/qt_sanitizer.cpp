// What the thread sanitizer must not look at: Qt is built without it, so that the sanitizer does
// not see the locks of Qt's thread pool and event queue. The type of an event is the one thing that
// the program itself reads of what came through that queue. The library of the loopback server is
// built without it too.

extern "C" const char* __tsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions() {
  return "called_from_lib:libcpp-httplib.so\n"
         "called_from_lib:libQt6Core.so\n"
         "called_from_lib:libQt6DBus.so\n"
         "called_from_lib:libQt6Gui.so\n"
         "called_from_lib:libQt6Widgets.so\n"
         "race:QEvent::type\n";
}
