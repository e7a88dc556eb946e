// Prints the triggers of a head as they come, until Enter is pressed.
//   WatchTriggers 192.168.0.10
using System;
using Fringix;

static class WatchTriggers {
  static int Main(string[] arguments) {
    try {
      using (Head head = Head.Open(arguments.Length > 0 ? arguments[0] : "127.0.0.2", TimeSpan.FromSeconds(3)))
      using (head.OnEvent(Show, exception => Console.Error.WriteLine(exception))) {
        Console.WriteLine("end with Enter");
        Console.ReadLine();
        return 0;
      }
    } catch (FringixException exception) {
      Console.Error.WriteLine(exception.Message);
      return 1;
    }
  }

  // Runs on a thread of the session and should return soon: a real program hands the work on.
  static void Show(HeadEvent what) {
    if (what.Kind == HeadEventKind.Trigger) Console.WriteLine("trigger of head " + what.Serial);
  }
}
