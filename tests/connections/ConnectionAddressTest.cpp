#include "support/Test.h"
#include "zelvar/connections/ConnectionBook.h"
#include "zelvar/connections/ConnectionPasting.h"

namespace zelvar {
namespace {

TEST(ConnectionAddress, IsTakenApartAndWrittenWithoutItsPassword) {
    for (auto const &[text, written, target] : test::Rows<DString, DString, DString>{
             {"postgres://zelvar@DB.lab/field", "postgresql://zelvar@db.lab/field", "db.lab:5432"},
             {"postgresql://u:p@ss%2Fx:y@h:1/db/a/b", "postgresql://u@h:1/db/a/b", "h:1"},
             {"https://ann@[::1]:8443/dav/", "https://ann@[::1]:8443/dav/", "[::1]:8443"},
             {"wms+HTTPS://maps.lab/ows?map=field&wsdl", "wms+https://maps.lab/ows?map=field&wsdl", "maps.lab:443"},
             {"s3://lab@Bucket/v1.2 data/../x", "s3://lab@Bucket/v1.2%20data/%2E%2E/x", "s3://lab@Bucket"},
             {"odbc://lab%20sql#part", "odbc://lab%20sql", "odbc://lab sql"},
             {"postgresql://h:0/db", "", ""},
             {"http://h:70000/", "", ""},
             {"http://[::1/", "", ""},
             {"PG:host=db", "", ""},
             {"://h", "", ""}}) {
        std::optional<ConnectionAddress> const address = ParseConnectionAddress(text);
        EXPECT_EQ(address ? address->ToText() : DString(), written) << text;
        EXPECT_EQ(address ? address->Target() : DString(), target) << text;
    }
    EXPECT_EQ(PasswordInAddress("postgresql://u:p@ss%2Fx:y@h:1/db"), "p@ss/x:y");
    EXPECT_EQ(PasswordInAddress("postgresql://u@h:1/db:x@y"), std::nullopt);
}

TEST(ConnectionAddress, OddNamesComeBackFromAMoniker) {
    for (DString const &name :
         {DString("a:b"), DString("a?b"), DString("a\"b"), DString("a}b${c}"), DString("50%"), DString("%41"),
          DString("a/b"), DString("\xC3\xA9"), DString("\xFF\xFE"), DString("a#b&c=d"), DString(".."), DString("@")})
        for (char const *own : {"postgresql://u@h:1/db", "s3://lab@b/p/", "wms+https://m/ows?map=x"}) {
            ConnectionAddress const address = *ParseConnectionAddress(own);
            ConnectionAddress const inside = address.Inside({name, name}, {{"LAYER", name}});
            EXPECT_EQ(ParseConnectionAddress(inside.ToText()), inside) << inside.ToText();
            EXPECT_TRUE(address.Holds(inside)) << inside.ToText();
            EXPECT_FALSE(inside.Holds(address));
        }
}

TEST(ConnectionAddress, HoldsWhatLiesInItForTheSameAccount) {
    for (auto const &[own, other, holds] :
         test::Rows<DString, DString, bool>{{"postgresql://u@h:5432/db", "postgresql://u@H/db/s/t?COLUMN=rast", true},
                                            {"postgresql://u@h/db", "postgresql://u@h/db2", false},
                                            {"postgresql://u@h/db", "postgresql://v@h/db/s", false},
                                            {"postgresql://u@h/db", "postgresql://u@h:1/db", false},
                                            {"s3://lab@b/p/", "s3://lab@b/p/x", true},
                                            {"s3://lab@b/p", "s3://lab@b/px", false},
                                            {"s3://lab@b", "s3://other@b/x", false},
                                            {"s3://lab@", "s3://lab@b/x", true},
                                            {"s3://lab@", "s3://other@b/x", false},
                                            {"wms+https://m/ows?map=a", "wms+https://m/ows?LAYER=x&MAP=a", true},
                                            {"wms+https://m/ows?map=a", "wms+https://m/ows?map=b", false},
                                            {"https://ann@c/dav/", "https://ann@c:443/dav", true}})
        EXPECT_EQ(ParseConnectionAddress(own)->Holds(*ParseConnectionAddress(other)), holds) << own << " " << other;
    EXPECT_EQ(MissingConnectionInWords("postgresql://u:pw@db.lab/x"), "No connection for db.lab:5432 is defined.");
    EXPECT_EQ(MissingConnectionInWords("/a/b"), "");
}

/// "kind key=value ... secret=x", in the order of the keys.
DString TextOf(std::optional<PastedConnection> const &pasted) {
    if (!pasted)
        return "nothing";
    DString text = WordsOf(pasted->connection.kind).word;
    for (auto const &[key, value] : pasted->connection.fields)
        text.append(" ").append(key).append("=").append(value);
    return pasted->secret.IsEmpty() ? text : text + " secret=" + DString(pasted->secret.Reveal());
}

TEST(Pasting, UnderstandsWhatIsFoundElsewhere) {
    for (auto const &[text, told] : test::Rows<DString, DString>{
             {" postgresql://u:p%40w@h:1/db?sslmode=require\n",
              "postgresql database=db host=h port=1 sslmode=require user=u secret=p@w"},
             {R"(host=db.lab dbname = 'my db' user=u password='it\'s')",
              "postgresql database=my db host=db.lab user=u secret=it's"},
             {"service=lab", "postgresql service=lab"},
             {"host='open", "nothing"},
             {"dbname=field", "nothing"},
             {"https://m.lab/ows?map=field&SERVICE=WMS&VERSION=1.3.0&REQUEST=GetCapabilities",
              "map address=https://m.lab/ows?map=field service=wms version=1.3.0"},
             {"http://m.lab/ows?request=getcapabilities", "map address=http://m.lab/ows"},
             {"s3://lab@field-data/v1.2%20data/", "objects bucket=field-data prefix=v1.2 data/ profile=lab"},
             {"https://s3.eu-west-1.amazonaws.com/bucket/a/b",
              "objects addressing=path bucket=bucket prefix=a/b region=eu-west-1"},
             {"https://my.bucket.s3.eu-west-1.amazonaws.com/a", "objects bucket=my.bucket prefix=a region=eu-west-1"},
             {"https://s3.amazonaws.com", "objects addressing=path"},
             {"https://s3x.amazonaws.com/b", "web address=https://s3x.amazonaws.com/b"},
             {"https://acc.blob.core.windows.net/field/a/b?sv=1&sig=x%3D&sp=rl",
              "objects bucket=field key=acc prefix=a/b service=az secret=sv=1&sig=x%3D&sp=rl"},
             {"https://acc.blob.core.usgovcloudapi.net/field?restype=container",
              "objects bucket=field endpoint=blob.core.usgovcloudapi.net key=acc service=az"},
             {"https://ann:pw@cloud.lab/dav/", "web address=https://cloud.lab/dav/ user=ann secret=pw"},
             {"ftp://h/x", "nothing"},
             {"", "nothing"},
             {"a word", "nothing"},
             {DString(70'000, 'a') + "=b", "nothing"}})
        EXPECT_EQ(TextOf(ConnectionFromPasted(text)), told) << text.substr(0, 80);
}

} // namespace
} // namespace zelvar
