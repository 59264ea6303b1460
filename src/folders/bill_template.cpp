#include "folders/bill_template.h"

namespace folders {

// Everything is within the page, so that it can be mailed or printed alone. Plain ASCII: it is declared windows-1252.
std::string_view defaultBillTemplate() {
  return R"html(<!DOCTYPE html>
<html>
<head>
<meta http-equiv="Content-Type" content="text/html; charset=windows-1252">
<title>%EXT%</title>
<style>
  body { font-family: Verdana, sans-serif; font-size: 10pt; color: #222; max-width: 46em; margin: 2em auto; }
  header { display: flex; justify-content: space-between; align-items: baseline; border-bottom: 2px solid #222; }
  header h1 { font-size: 16pt; margin: 0 0 .3em; }
  .facts { margin: 1.2em 0; line-height: 1.6; }
  table { border-collapse: collapse; margin-bottom: 1.5em; font-family: Verdana, sans-serif !important; }
  th { border-bottom: 1px solid #222; padding: .2em .4em; }
  td { border-bottom: 1px solid #ddd; padding: .2em .4em; }
  @media print { body { margin: 0; max-width: none; } tr { break-inside: avoid; } }
</style>
</head>
<body>
<header><h1>%RESELLER%</h1><div>%INTERVAL%</div></header>
<p class="facts">&#9742; <b>%EXT%</b></p>
%REPORT%
</body>
</html>
)html";
}

}  // namespace folders
