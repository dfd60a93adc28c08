"""Writes the examples in the comments of public headers as functions, so that a compiler reads
them: make_examples.py PROJECT {plain|drawing} OUTPUT

An example is a run of comment lines that are indented by four columns more than the text around
them and look like code.  What it takes for granted is said in SETTINGS, by header, for each of its
examples in order: parameters, and declarations in front of the function.  An example without a
setting is an error, and so is a setting without an example.
"""
import pathlib
import re
import sys

FOLDERS = ('document', 'model', 'platform', 'text', 'ui')
INDENTED = re.compile(r'\s*///     (.*)')
CODE = re.compile(r'[;{}]\s*(//.*)?$')

ITEM = 'std::shared_ptr<OLNode> item'
TREE = 'std::shared_ptr<OLTree> tree'
NOT_CODE = ['platform/propertylist/StringsTable.h']
DRAWING = ('platform/drawing/', 'ui/ImageHelpers.h')

# header: [(parameters, declarations), ...]
SETTINGS = {
    'document/ItemCount.h': [(ITEM, '')],
    'document/OLDataManager.h': [
        ('std::string path', '#include "platform/foundation/File.h"')],
    'model/OLItems.h': [
        (f'{TREE}, std::shared_ptr<OLNode> node, std::shared_ptr<OLNode> first, '
         'std::shared_ptr<OLNode> second, OLNodeList selection', '#include "model/OLTree.h"')],
    'model/OLNode.h': [('', '')],
    'model/OLTree.h': [('', '')],
    'model/OLTreeController.h': [('', '')],
    'model/runtime/OLTreeRuntimeAttributesController.h': [
        ('std::shared_ptr<OLTreeRuntimeAttributesController> controller, '
         'std::shared_ptr<OLNode> list, std::shared_ptr<OLNode> milk',
         '#include "model/runtime/OLNumberLabelFormats.h"')],
    'model/scan/OLTreeScanner.h': [(ITEM, '')],
    'model/scan/OLTreeScannerForMetadata.h': [('', '#include "model/OLTree.h"')],
    'model/undo/OLTreeUndoController.h': [
        (f'std::shared_ptr<OLDataSource> document, {ITEM}', '#include "ui/SNUIString.h"')],
    'platform/foundation/String.h': [('', '')],
    'platform/foundation/UndoManager.h': [
        ('std::shared_ptr<ns::UndoManager> undoManager, std::shared_ptr<List> list, '
         'std::shared_ptr<OLNode> item, uint64_t index',
         '#include "model/OLNode.h"\n'
         'namespace tavlin {\nstruct List : ns::Object {\n'
         '  void insertItem(std::shared_ptr<OLNode>, uint64_t) {}\n'
         '  void removeItem(uint64_t) {}\n};\n}'),
        ('std::shared_ptr<ns::UndoManager> undoManager, double point',
         'namespace tavlin {\nstruct View : ns::Object {\n  void move(double) {}\n'
         '  void example(std::shared_ptr<ns::UndoManager>, double);\n};\n}')],
    'platform/foundation/Value.h': [
        ('', '#include <string>\nnamespace tavlin {\ninline void use(const std::string&) {}\n}')],
    'platform/text/LinkDetector.h': [('', '')],
    'platform/text/MutableAttributedString.h': [
        (f'ns::Font font, {ITEM}', '#include "model/OLNode.h"\n#include "platform/text/Font.h"')],
    'platform/text/TextStorage.h': [
        ('ns::AttributedString text',
         '#include "text/ItemText.h"\n'
         'namespace tavlin {\ninline void layOut(ns::Range) {}\n}')],
    'platform/drawing/AffineTransform.h': [('', '')],
    'platform/drawing/BezierPath.h': [('', '')],
    'platform/drawing/Image.h': [
        ('', '#include "platform/drawing/BezierPath.h"\n'
             '#include "platform/drawing/DrawingColor.h"')],
    'ui/ImageHelpers.h': [
        ('std::shared_ptr<ns::Image> picture, std::shared_ptr<ns::Image> mask', '')],
}


# Examples show results that they do not use.
IGNORED = [f'#pragma GCC diagnostic ignored "-W{warning}"'
           for warning in ('unused', 'unused-result', 'unused-variable', 'unused-but-set-variable')]


def examples(text):
    """The examples of a header, each a list of (line number, code)."""
    found, lines = [], []
    for number, line in enumerate(text.splitlines() + [''], 1):
        match = INDENTED.match(line)
        if match:
            lines.append((number, match[1]))
            continue
        if lines and any(CODE.search(code) for _, code in lines):
            found.append(lines)
        lines = []
    return found


def function(header, index, lines, parameters):
    name = re.sub(r'\W', '_', header) + str(index)
    owner = 'View::example' if any('&View::' in code for _, code in lines) else name
    prefix = '' if owner != name else '[[maybe_unused]] static '
    body = '\n'.join(f'#line {number} "{header}"\n  {code}' for number, code in lines)
    return f'{prefix}void {owner}({parameters}) {{\n{body}\n}}\n'


def generated(project, part):
    headers, functions, faults, met = [], [], [], set()
    for path in sorted(path for folder in FOLDERS for path in (project / folder).rglob('*.h')):
        header = path.relative_to(project).as_posix()
        found = examples(path.read_text())
        if not found or header in NOT_CODE:
            continue
        met.add(header)
        settings = SETTINGS.get(header, [])
        if len(found) != len(settings):
            faults.append(f'{header}: {len(found)} examples, {len(settings)} settings')
        if header.startswith(DRAWING) != (part == 'drawing'):
            continue
        headers.append(f'#include "{header}"')
        for index, (lines, (parameters, declarations)) in enumerate(zip(found, settings)):
            headers.append(declarations)
            functions.append(function(header, index, lines, parameters))
    faults += [f'{header}: a setting and no example' for header in sorted(SETTINGS.keys() - met)]
    if faults:
        sys.exit('\n'.join(faults))
    return '\n'.join(['#include <memory>', *headers, *IGNORED, 'namespace tavlin {', *functions,
                      '}', ''])


if __name__ == '__main__':
    content = generated(pathlib.Path(sys.argv[1]), sys.argv[2])
    pathlib.Path(sys.argv[3]).write_text(content)
