// Takes a picture with each of several heads at the same time, and goes on with the others when one fails.
//   SeveralHeads 192.168.0.10 192.168.0.11
using System;
using System.Linq;
using System.Threading.Tasks;
using Fringix;

static class SeveralHeads {
  static int Main(string[] addresses) {
    // Commands to one head run one after the other; different heads need a thread each to run side by side.
    Task<bool>[] tasks = addresses.Select(address => Task.Factory.StartNew(() => Show(address), TaskCreationOptions.LongRunning)).ToArray();
    Task.WaitAll(tasks);
    return tasks.All(task => task.Result) ? 0 : 1;
  }

  static bool Show(string address) {
    try {
      using (Head head = Head.Open(address, TimeSpan.FromSeconds(3))) {
        double brightness = head.Live().Pixels.Average(pixel => (double)pixel);
        Console.WriteLine("{0}: brightness {1:0.0}", address, brightness);
        return true;
      }
    } catch (FringixException exception) {
      Console.Error.WriteLine("{0}: {1}", address, exception.Message);
      return false;
    }
  }
}
