# A draft, for a tap: there is no release to download yet, so it builds the repository that it is told of.
#   HOMEBREW_TIDEMARK_CAL_REPOSITORY=https://… brew install --HEAD ./packaging/homebrew/tidemark-cal.rb
class TidemarkCal < Formula
  desc "Calendars and reminders for other programs, as JSON lines over pipes"
  homepage "https://tidemark-cal.example"
  head ENV.fetch("HOMEBREW_TIDEMARK_CAL_REPOSITORY", "https://tidemark-cal.example/tidemark-cal.git"), branch: "main"

  depends_on "cmake" => :build
  depends_on "go-md2man" => :build
  depends_on "ninja" => :build
  depends_on "pkgconf" => :build
  depends_on "rapidjson" => :build
  depends_on "abseil"
  depends_on "libical"
  depends_on "uriparser"
  depends_on "utf8proc"

  def install
    system "cmake", "-S", ".", "-B", "build", "-G", "Ninja", "-DTIDEMARK_BUILD_TESTS=OFF", *std_cmake_args
    system "cmake", "--build", "build"
    system "cmake", "--install", "build"
  end

  test do
    (testpath/"empty.json").write("{}")
    answer = pipe_output("#{bin}/tidemark-cal-sim empty.json", '{"id":7,"cmd":"status"}', 0)
    assert_match '"id":7', answer
  end
end
