// A station that runs for months: each line of its input is a part to be looked at. When the head or its cable fails, the station says
// so, opens the head anew until that succeeds, and looks at the same part again.
//   Station 192.168.0.10
using System;
using System.Threading;
using Fringix;

static class Station {
  static void Main(string[] arguments) {
    string address = arguments.Length > 0 ? arguments[0] : "127.0.0.2";
    Head head = OpenPatiently(address);
    for (string part = Console.ReadLine(); part != null; part = Console.ReadLine()) {
      while (!Inspect(head, part)) {
        head.Dispose(); // nothing reconnects by itself: after a failure the session is over
        Thread.Sleep(1000); // a head that is there and fails is not asked without a pause
        head = OpenPatiently(address);
      }
    }
    head.Dispose();
  }

  static bool Inspect(Head head, string part) {
    try {
      Picture picture = head.Live();
      Console.WriteLine("{0}: level {1} in the middle", part, picture[picture.Size.Width / 2, picture.Size.Height / 2]);
      return true;
    } catch (FringixException exception) {
      Console.Error.WriteLine("{0} Connecting again.", exception.Message);
      return false;
    }
  }

  static Head OpenPatiently(string address) {
    while (true) {
      try {
        Head head = Head.Open(address, TimeSpan.FromSeconds(3));
        Console.Error.WriteLine("{0}: connected", address);
        return head;
      } catch (FringixException) {
        Thread.Sleep(1000);
      }
    }
  }
}
