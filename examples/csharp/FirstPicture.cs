// Opens the head at an address and saves what its camera sees now as live.pgm.
//   FirstPicture 192.168.0.10
using System;
using System.IO;
using System.Text;
using Fringix;

static class FirstPicture {
  static int Main(string[] arguments) {
    string address = arguments.Length > 0 ? arguments[0] : "127.0.0.2";
    try {
      using (Head head = Head.Open(address, TimeSpan.FromSeconds(3))) {
        Picture picture = head.Live();
        Save(picture, "live.pgm");
        Console.WriteLine("head {0}: {1} pixels in live.pgm", head.Key.Serial, picture.Size);
        return 0;
      }
    } catch (Exception exception) when (exception is FringixException || exception is IOException) {
      Console.Error.WriteLine(exception.Message);
      return 1;
    }
  }

  static void Save(Picture picture, string path) {
    using (FileStream file = File.Create(path)) {
      byte[] header = Encoding.ASCII.GetBytes("P5 " + picture.Size.Width + " " + picture.Size.Height + " 255\n");
      file.Write(header, 0, header.Length);
      file.Write(picture.Pixels, 0, picture.Pixels.Length);
    }
  }
}
