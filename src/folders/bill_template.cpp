#include "folders/bill_template.h"

namespace folders {

// Everything is within the page, so that it can be mailed or printed alone. Plain ASCII: it is declared windows-1252.
// It has no words of its own, for it is shown in whatever language is in use; what is not known leaves no gap. The
// headings of the calls are made a head of their table, so that every sheet of paper repeats them.
std::string_view defaultBillTemplate() {
  return R"html(<!DOCTYPE html>
<html>
<head>
<meta http-equiv="Content-Type" content="text/html; charset=windows-1252">
<meta name="viewport" content="width=device-width">
<title>%EXT%</title>
<style>
  @page { size: A4; margin: 16mm 15mm; }
  body { font-family: Verdana, "DejaVu Sans", sans-serif; font-size: 9pt; line-height: 1.45; color: #1b1f24;
         max-width: 180mm; margin: 10mm auto; padding: 0 5mm; }
  header { display: flex; justify-content: space-between; align-items: flex-end; gap: 10mm;
           border-bottom: 2px solid #2f6fb0; padding-bottom: 3mm; }
  h1 { font-size: 16pt; line-height: 1.2; margin: 0 0 1mm; }
  header p { margin: 0; color: #59636e; font-size: 8pt; }
  header div + div { text-align: right; }
  .place span:not(:empty) ~ span:not(:empty)::before { content: ", "; }
  .bill { display: flex; justify-content: space-between; align-items: baseline; margin: 6mm 0 4mm; }
  .bill big { font-size: 14pt; font-weight: bold; }
  table { border-collapse: collapse; width: 100%; font-family: inherit !important; font-size: 8.5pt !important;
          font-variant-numeric: tabular-nums; }
  th, td { border: 0; padding: 1.1mm 1.5mm; }
  th { border-bottom: 1.5px solid #1b1f24; }
  td { border-bottom: 1px solid #d5dae0; }
  tr { break-inside: avoid; }
  table:first-of-type tbody { display: contents; }
  table:first-of-type tr:first-child { display: table-header-group; }
  table:last-of-type { width: auto; min-width: 45%; margin: 6mm 0 0 auto; font-size: 10pt !important;
                       break-inside: avoid; }
  table:last-of-type td { border: 0; }
  table:last-of-type tr { border-bottom: 1px solid #d5dae0; }
  table:last-of-type tr:nth-child(4) { font-weight: bold; border-bottom-color: #1b1f24; }
  @media print { body { max-width: none; margin: 0; padding: 0; } }
</style>
</head>
<body>
<header>
<div><h1>%RESELLER%</h1>
<p class="place"><span>%OrganizationAddress%</span><span>%OrganizationOras%</span></p>
<p>%OrganizationCF%</p></div>
<div><p>%OrganizationTel%</p><p>%OrganizationEmail%</p><p>%OrganizationWeb%</p></div>
</header>
<div class="bill"><big>&#9742; %EXT%</big><div>%INTERVAL%</div></div>
%REPORT%
</body>
</html>
)html";
}

}  // namespace folders
