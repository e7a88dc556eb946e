// How code of one's own is tested against a simulated head. The code to be tested finds an exposure in which nothing is too bright.
//   OwnCodeTest /usr/bin/fringix-head
using System;
using System.Diagnostics;
using System.Linq;
using Fringix;

// ---- The code to be tested

static class Exposure {
  // Halves the exposure until less than one pixel in a hundred is too bright.
  public static int Find(Head head) {
    int exposure = head.Ini["Camera", "Exposure"];
    for (byte[] pixels = head.Live().Pixels; pixels.Count(pixel => pixel == 255) * 100 >= pixels.Length; pixels = head.Live().Pixels)
      head.Ini["Camera", "Exposure"] = exposure /= 2;
    return exposure;
  }
}

// ---- The tests: each makes the head see what it is about. Any framework does as well.

static class OwnCodeTest {
  const string Address = "127.0.0.9";

  static int Main(string[] arguments) {
    using (Process simulated = Start(arguments.Length > 0 ? arguments[0] : "fringix-head")) {
      try {
        return Failures() == 0 ? 0 : 1;
      } finally {
        simulated.Kill();
        simulated.WaitForExit();
      }
    }
  }

  static int Failures() {
    Head head = Head.Open(Address, TimeSpan.FromSeconds(3));
    head.ProjectorCommand(4, 0); // white light
    int failures = Expect("a dark picture keeps its exposure", FoundFrom(head, 2000) == 2000);
    failures += Expect("a bright one gets a shorter exposure", FoundFrom(head, 100000) < 100000);
    head.Dispose();
    return failures + Expect("a head that is closed is told", TellsOfAClosedHead(head));
  }

  static int FoundFrom(Head head, int start) {
    head.Ini["Camera", "Exposure"] = start;
    return Exposure.Find(head);
  }

  static bool TellsOfAClosedHead(Head head) {
    try {
      Exposure.Find(head);
      return false;
    } catch (ObjectDisposedException) {
      return true;
    }
  }

  static int Expect(string what, bool holds) {
    Console.WriteLine((holds ? "passed: " : "FAILED: ") + what);
    return holds ? 0 : 1;
  }

  // The head has said "ready" when clients can connect.
  static Process Start(string program) {
    Process simulated = Process.Start(new ProcessStartInfo {
      FileName = program, Arguments = "--address " + Address + " --camera 320x256", UseShellExecute = false, RedirectStandardOutput = true
    });
    string line = simulated.StandardOutput.ReadLine();
    while (line != null && !line.StartsWith("ready")) line = simulated.StandardOutput.ReadLine();
    if (line == null) throw new InvalidOperationException(program + " did not start");
    return simulated;
  }
}
